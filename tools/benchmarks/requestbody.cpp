// bench-request-body [MEGABYTES]: sends a recording of that size (460 unless told) through the engine to a
// fake server, and prints how long the main thread was kept from its events at most, by a heartbeat of
// 1 ms, and how far the memory grew. Exit status 1 when a limit is not met.

#include "app/base/Async.h"
#include "recognition/EngineProcessRegistry.h"
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

constexpr double longestGapMs = 16;
constexpr double mostGrowthMiB = 8;

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

    [[nodiscard]] double longestGap() const { return double(m_longest) / 1e6; }

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

/// Of /proc/self/status, in MiB.
double memory(const QByteArray &field)
{
    QFile status(u"/proc/self/status"_s);
    if (!status.open(QFile::ReadOnly))
        return 0;
    for (const QByteArray &line : status.readAll().split('\n')) {
        if (line.startsWith(field + ':'))
            return line.mid(field.size() + 1).simplified().split(' ').first().toDouble() / 1024;
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

QString makeRecording(const QString &folder, qint64 megabytes)
{
    QFile file(folder + u"/recording.wav"_s);
    const QByteArray piece(1'000'000, 'x');
    bool isWritten = file.open(QFile::WriteOnly);
    for (qint64 i = 0; isWritten && i < megabytes; ++i)
        isWritten = file.write(piece) == piece.size();
    if (!isWritten)
        qFatal("cannot write %s", qPrintable(file.fileName()));
    return file.fileName();
}

/// One request under the heartbeat, up to the removal of its files. Whether the limits were met.
QCoro::Task<bool> measure(const char *name, WhisperServerEngine *engine, QString recording,
                          std::stop_token stop)
{
    Heartbeat heartbeat;
    resetPeakMemory();
    const double before = memory("VmRSS");
    QElapsedTimer time;
    time.start();
    heartbeat.start();
    try {
        co_await engine->infer(recording, u"en"_s, WhisperServerEngine::NonSpeech::Keep, stop);
    } catch (const Cancelled &) {
    }
    const double seconds = double(time.elapsed()) / 1000;
    co_await sleepFor(1s);
    const double growth = memory("VmHWM") - before;
    std::printf("%s: %.2f s, longest gap %.1f ms (limit %.0f), memory growth %.1f MiB (limit %.0f)\n", name,
                seconds, heartbeat.longestGap(), longestGapMs, growth, mostGrowthMiB);
    co_return heartbeat.longestGap() <= longestGapMs &&growth <= mostGrowthMiB;
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
    bool isGood = co_await measure("answered", engine, recording, {});
    std::stop_source stop;
    spawn(abortWhenSent(home, 3, stop));
    isGood &= co_await measure("aborted", engine, recording, stop.get_token());
    QCoreApplication::exit(isGood ? 0 : 1);
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const FakeEngineHome home(u"whisper-server"_s);
    const FakeAnswer noSegment{.body = R"({"segments":[]})"};
    home.behave(
        {.keepsBodies = false, .answers = {{u"/inference"_s, {noSegment, noSegment, FakeAnswer::never()}}}});
    const qint64 megabytes = QCoreApplication::arguments().value(1, u"460"_s).toLongLong();
    const QString recording = makeRecording(home.resources(), megabytes);
    EngineProcessRegistry registry((QString()));
    WhisperServerEngine engine({.resources = home.resources(), .folders = {}}, registry, home.resources());
    spawn(measureAll(&engine, &home, recording));
    return QCoreApplication::exec();
}
