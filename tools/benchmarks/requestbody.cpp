// bench-request-body FOLDER: sends a recording of 460 MB through the engine to a fake server, once to its
// answer and once aborted when it was sent. Prints as JSON how long the main thread was kept from its events
// at most, by a heartbeat of 1 ms, and how far the memory grew. The files lie in FOLDER.

#include "base/Async.h"
#include "engine/EngineProcessRegistry.h"
#include "recognition/WhisperServerEngine.h"
#include "tests/support/FakeEngineHome.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QTimer>

#include <cstdio>

using namespace Qt::StringLiterals;
using namespace orvane;
using namespace std::chrono_literals;

namespace {

constexpr int recordingMegabytes = 460;

struct Cost
{
    double longestPauseMs = 0;
    qint64 growthKiB = 0;
};

/// Time that this thread has been ready to run and had no processor, since it began.
qint64 nanosecondsWithoutProcessor()
{
    QFile statistics(u"/proc/thread-self/schedstat"_s);
    if (!statistics.open(QFile::ReadOnly))
        return 0;
    return statistics.readAll().split(' ').value(1).toLongLong(); // time run, time waited, times run
}

/// The longest time between two beats of a timer on the main thread, without what other programs on a busy
/// machine took from it.
class Heartbeat
{
public:
    Heartbeat()
    {
        m_timer.setTimerType(Qt::PreciseTimer);
        QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] { beat(); });
    }

    void start()
    {
        m_withoutProcessor = nanosecondsWithoutProcessor();
        m_sinceBeat.start();
        m_timer.start(1);
    }

    [[nodiscard]] double longestPause() const { return double(m_longest) / 1e6; }

private:
    void beat()
    {
        const qint64 withoutProcessor = nanosecondsWithoutProcessor();
        const qint64 taken = withoutProcessor - std::exchange(m_withoutProcessor, withoutProcessor);
        m_longest = std::max(m_longest, m_sinceBeat.nsecsElapsed() - taken);
        m_sinceBeat.start();
    }

    QTimer m_timer;
    QElapsedTimer m_sinceBeat;
    qint64 m_withoutProcessor = 0;
    qint64 m_longest = 0;
};

/// Of /proc/self/status, in KiB.
qint64 memory(const QByteArray &field)
{
    QFile status(u"/proc/self/status"_s);
    if (!status.open(QFile::ReadOnly))
        return 0;
    for (const QByteArray &line : status.readAll().split('\n')) {
        if (line.startsWith(field + ':'))
            return line.mid(field.size() + 1).simplified().split(' ').first().toLongLong();
    }
    return 0;
}

/// The peak counts from now on.
void resetPeakMemory()
{
    QFile references(u"/proc/self/clear_refs"_s);
    if (references.open(QFile::WriteOnly))
        references.write("5");
}

QString makeRecording(const QString &folder)
{
    QFile file(folder + u"/recording.wav"_s);
    const QByteArray piece(1'000'000, 'x');
    bool isWritten = file.open(QFile::WriteOnly);
    for (int i = 0; isWritten && i < recordingMegabytes; ++i)
        isWritten = file.write(piece) == piece.size();
    if (!isWritten)
        qFatal("cannot write %s", qPrintable(file.fileName()));
    return file.fileName();
}

/// One request, up to the removal of its files.
QCoro::Task<Cost> measure(WhisperServerEngine *engine, QString recording, std::stop_token stop)
{
    Heartbeat heartbeat;
    resetPeakMemory();
    const qint64 before = memory("VmRSS");
    heartbeat.start();
    try {
        co_await engine->infer(recording, u"en"_s, WhisperServerEngine::NonSpeech::Keep, stop);
    } catch (const Cancelled &) {
    }
    co_await sleepFor(1s);
    co_return Cost{.longestPauseMs = heartbeat.longestPause(), .growthKiB = memory("VmHWM") - before};
}

QCoro::Task<> abortWhenSent(const FakeEngineHome *home, qsizetype requests, std::stop_source stop)
{
    while (home->requests(u"/inference"_s).size() < requests)
        co_await sleepFor(20ms);
    stop.request_stop();
}

QCoro::Task<> measureAll(WhisperServerEngine *engine, const FakeEngineHome *home, QString recording)
{
    co_await engine->load(recording);
    co_await engine->infer(home->executable(), u"en"_s); // what is made once is no part of it
    const Cost answered = co_await measure(engine, recording, {});
    std::stop_source stop;
    spawn(abortWhenSent(home, 3, stop));
    const Cost aborted = co_await measure(engine, recording, stop.get_token());
    std::printf("{\"longest_pause_ms\": %.1f, \"growth_kib\": %lld}\n",
                std::max(answered.longestPauseMs, aborted.longestPauseMs),
                std::max(answered.growthKiB, aborted.growthKiB));
    co_await engine->stopAndWait();
    QCoreApplication::quit();
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const FakeEngineHome home(u"whisper-server"_s);
    const FakeAnswer noSegment{.body = R"({"segments":[]})"};
    home.behave(
        {.keepsBodies = false, .answers = {{u"/inference"_s, {noSegment, noSegment, FakeAnswer::never()}}}});
    const QString folder = QCoreApplication::arguments().value(1, u"."_s);
    const QString recording = makeRecording(folder);
    EngineProcessRegistry registry((QString()));
    WhisperServerEngine engine({.resources = home.resources(), .folders = {}}, registry, folder);
    spawn(measureAll(&engine, &home, recording));
    return QCoreApplication::exec();
}
