// bench-dictation STARTS ROUNDS: starts the program STARTS times in a surrounding of real parts, has it take
// ROUNDS dictations each time, and prints as one JSON object what was seen of it from outside. Times are in
// milliseconds, one of each dictation, those of the first one after a start apart from later ones.

#include "tests/e2e/OrvaneProgram.h"
#include "tests/support/FocusedEditor.h"
#include "tests/support/SessionBus.h"
#include "tests/support/SoundServer.h"
#include "tests/support/XDisplay.h"
#include "tests/support/XKeyboard.h"
#include "tools/benchmarks/outside/KeptRequest.h"
#include "tools/benchmarks/outside/ProcessCosts.h"
#include "tools/benchmarks/outside/RecordingWatch.h"
#include "tools/benchmarks/outside/ScreenWatch.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QThread>

#include <cstdio>
#include <cstdlib>

using namespace Qt::StringLiterals;
using namespace orvane;
using namespace orvane::test;
using Key = XKeyboard::Key;

namespace {

// All in milliseconds.
constexpr int patience = 60'000;
/// Between two looks: few enough to take nothing from the engine, which wants every core.
constexpr int step = 3;
constexpr int betweenPresses = 120;
/// Before the speech, so that the first recording is longer than the loading of the model.
constexpr int silence = 2000;
/// From the last word to the stop.
constexpr int lastWord = 200;
constexpr int untilIdle = 5000;
constexpr int idleTime = 20'000;
constexpr int recordingTime = 10'000;

const QString microphone = u"mic"_s;

double milliseconds(const QElapsedTimer &timer)
{
    return double(timer.nsecsElapsed()) / 1e6;
}

template <typename Condition>
double until(const char *what, const QElapsedTimer &timer, Condition condition)
{
    while (!condition()) {
        if (timer.hasExpired(patience))
            qFatal("not seen: %s", what);
        QThread::msleep(step);
    }
    return milliseconds(timer);
}

class DictationBench
{
public:
    DictationBench();
    ~DictationBench();
    Q_DISABLE_COPY_MOVE(DictationBench)

    void start();
    void dictate(FocusedEditor &editor, const QString &which);
    void measureIdle();
    void measureRecording();
    void quit();
    void print() const;

private:
    void startTray();
    void pressTwice(QElapsedTimer &sinceSecond);
    void waitForState(const QByteArray &state);
    [[nodiscard]] QString engineAddress() const;
    [[nodiscard]] ProcessCosts costs() const { return ProcessCosts::of(m_application->processId()); }
    void note(const QString &name, double value);

    SoundServer m_sound;
    SessionBus m_bus;
    XKeyboard m_keyboard;
    ScreenWatch m_screen;
    QProcess m_tray;
    OrvaneProgram m_program;
    const QString m_speech = m_program.path(u"sentence.wav"_s);
    std::unique_ptr<RecordingWatch> m_recordings;
    std::unique_ptr<QProcess> m_application;
    QJsonObject m_noted;
};

DictationBench::DictationBench()
{
    XKeyboard::setLayouts(u"us"_s);
    m_sound.plugIn(microphone);
    const QProcessEnvironment sound = m_sound.environment();
    for (const QString &name : {u"XDG_RUNTIME_DIR"_s, u"PULSE_SERVER"_s, u"PULSE_COOKIE"_s})
        m_program.setEnvironment(name, sound.value(name));
    m_program.setEnvironment(u"DBUS_SESSION_BUS_ADDRESS"_s, m_bus.address());
    m_program.install(u"base"_s);
    m_recordings = std::make_unique<RecordingWatch>(sound);
    const QString sentence = u"The quick brown fox jumps over the lazy dog"_s;
    if (QProcess::execute(u"flite"_s, {u"-voice"_s, u"rms"_s, u"-t"_s, sentence, u"-o"_s, m_speech}) != 0)
        qFatal("flite does not speak");
    startTray();
}

DictationBench::~DictationBench()
{
    m_tray.kill();
    m_tray.waitForFinished();
}

void DictationBench::startTray()
{
    m_tray.start(u"trayer"_s, {u"--edge"_s, u"top"_s, u"--align"_s, u"right"_s});
    if (!m_tray.waitForStarted())
        qFatal("trayer cannot be started");
    QElapsedTimer timer;
    timer.start();
    until("a tray", timer, [this] { return m_screen.hasTray(); });
}

void DictationBench::start()
{
    m_screen.begin();
    QElapsedTimer timer;
    timer.start();
    m_application = m_program.start({u"--background"_s});
    note(u"tray"_s, until("the icon in the tray", timer, [this] { return m_screen.hasDockedIcon(); }));
    waitForState("idle");
}

void DictationBench::dictate(FocusedEditor &editor, const QString &which)
{
    KeptRequest request(m_program.temporaryFolder(), m_program.path(u"request.bin"_s));
    const qsizetype textBefore = editor.text().size();
    m_screen.begin();
    m_recordings->begin();

    QElapsedTimer started;
    pressTwice(started);
    double recording = 0;
    double indicator = 0;
    until("the beginning of a dictation", started, [&] {
        if (recording == 0 && m_recordings->hasBegun())
            recording = milliseconds(started);
        if (indicator == 0 && m_screen.showsOverlay())
            indicator = milliseconds(started);
        return recording > 0 && indicator > 0;
    });
    QThread::msleep(silence);
    m_sound.speak(microphone, m_speech);
    QThread::msleep(lastWord); // too short for anything to be recognised before the stop

    QElapsedTimer stopped;
    pressTwice(stopped);
    const double text = until("the text", stopped, [&] {
        request.look();
        return editor.text().size() > textBefore;
    });
    waitForState("idle");

    note(which + u"Recording"_s, recording);
    note(which + u"Indicator"_s, indicator);
    note(which + u"Unrecorded"_s, double(started.msecsTo(stopped)) - request.recordedTime());
    note(which + u"Text"_s, text);
    QThread::msleep(silence); // so that the engine is as rested as the program found it
    note(which + u"Curl"_s, timeOfCurl(request.path(), engineAddress()));
}

void DictationBench::pressTwice(QElapsedTimer &sinceSecond)
{
    m_keyboard.tap(Key::RightCtrl);
    QThread::msleep(betweenPresses);
    sinceSecond.start();
    m_keyboard.tap(Key::RightCtrl);
}

void DictationBench::waitForState(const QByteArray &state)
{
    QElapsedTimer timer;
    timer.start();
    until(state.constData(), timer, [&] { return m_program.run({u"status"_s}).output.trimmed() == state; });
}

QString DictationBench::engineAddress() const
{
    const QList<qint64> engines = m_program.enginesOf(*m_application);
    if (engines.size() != 1)
        qFatal("%d engines run", int(engines.size()));
    QFile commandLine(u"/proc/%1/cmdline"_s.arg(engines.constFirst()));
    if (!commandLine.open(QFile::ReadOnly))
        qFatal("the engine has ended");
    const QList<QByteArray> arguments = commandLine.readAll().split('\0');
    const QByteArray port = arguments.value(arguments.indexOf("--port") + 1);
    return u"http://127.0.0.1:%1/inference"_s.arg(QString::fromLatin1(port));
}

void DictationBench::measureIdle()
{
    QThread::msleep(untilIdle);
    const ProcessCosts before = costs();
    QThread::msleep(idleTime);
    const ProcessCosts after = costs();
    note(u"residentMiB"_s, after.residentMiB);
    note(u"privateMiB"_s, after.privateMiB);
    note(u"wakeUpsPerSecond"_s, double(after.wakeUps - before.wakeUps) * 1000 / idleTime);
}

void DictationBench::measureRecording()
{
    QElapsedTimer timer;
    pressTwice(timer);
    waitForState("recording");
    const auto speech = m_sound.startSpeaking(microphone, fixture(u"jfk.wav"_s));
    QThread::msleep(500);
    timer.start();
    const double before = costs().processorSeconds;
    QThread::msleep(recordingTime);
    const double busy = costs().processorSeconds - before;
    note(u"recordingPercent"_s, busy * 1e5 / milliseconds(timer));
    m_keyboard.tap(Key::Escape);
    waitForState("idle");
}

void DictationBench::quit()
{
    m_application->terminate();
    if (!m_application->waitForFinished(patience))
        qFatal("the program does not end");
}

void DictationBench::note(const QString &name, double value)
{
    QJsonArray values = m_noted.value(name).toArray();
    values.append(value);
    m_noted.insert(name, values);
}

void DictationBench::print() const
{
    std::puts(QJsonDocument(m_noted).toJson(QJsonDocument::Compact).constData());
}

} // namespace

int main(int argc, char **argv)
{
    if (argc != 3) {
        std::fputs("usage: bench-dictation STARTS ROUNDS\n", stderr);
        return 2;
    }
    if (const std::optional<int> status = XDisplay::runThisProgram(argc, argv))
        return *status;
    const QCoreApplication application(argc, argv);
    const int starts = std::atoi(argv[1]);
    const int rounds = std::atoi(argv[2]);
    DictationBench bench;
    for (int i = 0; i < starts; ++i) {
        bench.start();
        if (i == 0)
            bench.measureIdle();
        FocusedEditor editor(FocusedEditor::Kind::Terminal);
        for (int round = 0; round < rounds; ++round)
            bench.dictate(editor, round == 0 ? u"first"_s : u"later"_s);
        if (i == 0)
            bench.measureRecording();
        bench.quit();
    }
    bench.print();
    return 0;
}
