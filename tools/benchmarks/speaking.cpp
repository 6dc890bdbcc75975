// bench-speaking TEXT ROUNDS: has the program take dictations that are recognised while they are spoken, with
// real parts around it, and prints as one JSON object how long the text took after the stop and what the
// engine computed, beside curl sending the whole recording to the same engine. TEXT has one sentence in a
// line, with a bar where its speaker may pause. Times are in milliseconds, one of each dictation.

#include "engine/ProcessControl.h"
#include "tests/e2e/Surroundings.h"
#include "tests/support/FocusedEditor.h"
#include "tests/support/Speech.h"
#include "tests/support/WordError.h"
#include "tests/support/XDisplay.h"
#include "tests/support/XKeyboard.h"
#include "tools/benchmarks/outside/KeptRequest.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QThread>

#include <cstdio>
#include <cstdlib>

using namespace Qt::StringLiterals;
using namespace orvane;
using namespace orvane::test;
using Key = XKeyboard::Key;

namespace {

// All in milliseconds.
constexpr int patience = 240'000;
constexpr int step = 3;
constexpr int betweenPresses = 120;
/// Before the speech, as speakers begin when they see the indicator.
constexpr int breath = 400;
/// Until the program has given up hope that the speech goes on.
constexpr int longPause = 1300;
constexpr int look = 200;

constexpr double betweenSentences = 0.7; // seconds
constexpr double withinSentences = 0.3;
constexpr double roomNoise = -60; // decibels

struct Dictation
{
    QString name;
    Speech speech;
    QString said;
    /// From the last word to the stop; none: until the engine rests.
    std::optional<int> stopAfter;
    int rounds;
};

class SpeakingBench
{
public:
    SpeakingBench();
    ~SpeakingBench();
    Q_DISABLE_COPY_MOVE(SpeakingBench)

    void take(const Dictation &dictation);
    void print() const { std::puts(QJsonDocument(m_noted).toJson(QJsonDocument::Compact).constData()); }

private:
    void takeOnce(const Dictation &dictation, const QString &file);
    void askCurl(const QString &name, const QString &file);
    void pressTwice(QElapsedTimer &sinceSecond);
    template <typename Condition>
    void until(const char *what, Condition condition) const;
    void waitForState(const QByteArray &state) const;
    [[nodiscard]] qint64 engine() const;
    [[nodiscard]] qint64 engineTime() const { return ProcessControl::processorTime(engine()).count(); }
    [[nodiscard]] QString engineAddress() const;
    void note(const QString &name, double value);

    OrvaneProgram m_program{u"base"_s};
    Surroundings m_surroundings{m_program};
    XKeyboard m_keyboard;
    std::unique_ptr<QProcess> m_application;
    std::unique_ptr<FocusedEditor> m_editor;
    QJsonObject m_noted;
};

SpeakingBench::SpeakingBench()
{
    XKeyboard::setLayouts(u"us"_s);
    m_application = m_program.start({u"--background"_s});
    waitForState("idle");
    m_editor = std::make_unique<FocusedEditor>(FocusedEditor::Kind::Terminal);
}

SpeakingBench::~SpeakingBench()
{
    m_application->terminate();
    m_application->waitForFinished();
}

template <typename Condition>
void SpeakingBench::until(const char *what, Condition condition) const
{
    QElapsedTimer timer;
    timer.start();
    while (!condition()) {
        if (timer.hasExpired(patience))
            qFatal("not seen: %s", what);
        QThread::msleep(step);
    }
}

void SpeakingBench::waitForState(const QByteArray &state) const
{
    until(state.constData(), [&] { return m_program.run({u"status"_s}).output.trimmed() == state; });
}

void SpeakingBench::pressTwice(QElapsedTimer &sinceSecond)
{
    m_keyboard.tap(Key::RightCtrl);
    QThread::msleep(betweenPresses);
    sinceSecond.start();
    m_keyboard.tap(Key::RightCtrl);
}

void SpeakingBench::take(const Dictation &dictation)
{
    const QString file = m_program.path(u"speech.wav"_s);
    dictation.speech.write(file);
    for (int round = 0; round < dictation.rounds; ++round)
        takeOnce(dictation, file);
}

void SpeakingBench::takeOnce(const Dictation &dictation, const QString &file)
{
    const QString before = m_editor->text();
    QElapsedTimer timer;
    pressTwice(timer);
    waitForState("recording");
    until("the engine", [this] { return !m_program.enginesOf(*m_application).isEmpty(); });
    QThread::msleep(breath);
    const qint64 timeBefore = engineTime();
    m_surroundings.sound().speak(Surroundings::microphone, file);
    if (const auto wait = dictation.stopAfter) {
        QThread::msleep(static_cast<unsigned long>(*wait));
    } else {
        QThread::msleep(longPause);
        until("the engine at rest", [this] {
            const qint64 busy = engineTime();
            QThread::msleep(look);
            return engineTime() - busy < look / 10;
        });
    }
    pressTwice(timer);
    until("the text", [&] { return m_editor->text().size() > before.size(); });
    note(dictation.name + u"Text"_s, double(timer.nsecsElapsed()) / 1e6);
    waitForState("idle");
    note(dictation.name + u"Processor"_s, double(engineTime() - timeBefore));
    note(dictation.name + u"Errors"_s, wordError(m_editor->text().mid(before.size()), dictation.said));
    askCurl(dictation.name, file);
}

void SpeakingBench::askCurl(const QString &name, const QString &file)
{
    const qint64 before = engineTime();
    note(name + u"Curl"_s, timeOfCurl(file, engineAddress()));
    note(name + u"CurlProcessor"_s, double(engineTime() - before));
}

qint64 SpeakingBench::engine() const
{
    const QList<qint64> engines = m_program.enginesOf(*m_application);
    if (engines.size() != 1)
        qFatal("%d engines run", int(engines.size()));
    return engines.constFirst();
}

QString SpeakingBench::engineAddress() const
{
    QFile commandLine(u"/proc/%1/cmdline"_s.arg(engine()));
    if (!commandLine.open(QFile::ReadOnly))
        qFatal("the engine has ended");
    const QList<QByteArray> arguments = commandLine.readAll().split('\0');
    const QByteArray port = arguments.value(arguments.indexOf("--port") + 1);
    return u"http://127.0.0.1:%1/inference"_s.arg(QString::fromLatin1(port));
}

void SpeakingBench::note(const QString &name, double value)
{
    QJsonArray values = m_noted.value(name).toArray();
    values.append(value);
    m_noted.insert(name, values);
}

enum class Pauses { Natural, None };

Dictation spoken(const QStringList &sentences, double seconds, Pauses pauses)
{
    static const QRegularExpression marks(u"[,.?]"_s);
    Dictation dictation;
    for (qsizetype i = 0; dictation.speech.seconds() < seconds; ++i) {
        const QString &sentence = sentences[i % sentences.size()];
        dictation.said += QString(sentence).remove(u'|') + u' ';
        if (pauses == Pauses::None) {
            dictation.speech = {};
            dictation.speech.say(QString(dictation.said).remove(marks));
            continue;
        }
        if (i > 0)
            dictation.speech.pause(betweenSentences);
        const QStringList parts = sentence.split(u'|');
        for (qsizetype part = 0; part < parts.size(); ++part) {
            if (part > 0)
                dictation.speech.pause(withinSentences);
            dictation.speech.say(parts[part]);
        }
    }
    dictation.speech.addNoise(roomNoise);
    return dictation;
}

} // namespace

int main(int argc, char **argv)
{
    if (argc != 3) {
        std::fputs("usage: bench-speaking TEXT ROUNDS\n", stderr);
        return 2;
    }
    if (const std::optional<int> status = XDisplay::runThisProgram(argc, argv))
        return *status;
    const QCoreApplication application(argc, argv);
    QFile text(QString::fromLocal8Bit(argv[1]));
    if (!text.open(QFile::ReadOnly))
        qFatal("%s cannot be read", argv[1]);
    const QStringList sentences = QString::fromUtf8(text.readAll()).split(u'\n', Qt::SkipEmptyParts);
    const int rounds = std::atoi(argv[2]);
    const int fewRounds = std::max(1, rounds / 5);

    SpeakingBench bench;
    const auto take = [&](const char *name, const Dictation &spoken, std::optional<int> stopAfter,
                          int count) {
        Dictation dictation = spoken;
        dictation.name = QString::fromLatin1(name);
        dictation.stopAfter = stopAfter;
        dictation.rounds = count;
        bench.take(dictation);
    };
    const Dictation brief = spoken(sentences, 9, Pauses::Natural);
    take("warmUp", spoken(sentences, 1, Pauses::Natural), 300, 1);
    take("rested", brief, std::nullopt, fewRounds);
    take("brief", brief, 300, rounds);
    take("half", brief, 500, fewRounds);
    take("breathless", spoken(sentences, 9, Pauses::None), 300, fewRounds);
    take("minute", spoken(sentences, 57, Pauses::Natural), 500, std::max(1, rounds / 10));
    take("long", spoken(sentences, 110, Pauses::Natural), 500, std::max(1, rounds / 10));
    bench.print();
    return 0;
}
