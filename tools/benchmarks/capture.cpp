// Records from the default microphone and prints one line of JSON: milliseconds from start() to the first
// sample, at first and again, and of stop(); the longest that the main thread was held up meanwhile; then,
// for a recording in chunks, the share of one core in percent, and the private memory in KiB before the first
// recording, and at the beginning and the end of this one.
//
// usage: bench-capture MODULE-FOLDER [SECONDS]

#include "audio/AudioRecorder.h"

#include "base/Async.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>

#include <sys/resource.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace orvane;

namespace {

constexpr int warmRounds = 15;

double processorSeconds()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval &time) { return double(time.tv_sec) + double(time.tv_usec) / 1e6; };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

long privateMemory()
{
    QFile file(u"/proc/self/status"_s);
    if (!file.open(QFile::ReadOnly))
        return 0;
    const QByteArray status = file.readAll();
    return std::atol(status.constData() + status.indexOf("RssAnon:") + int(sizeof "RssAnon:") - 1);
}

/// Notes the longest time between two turns of the event loop.
class HoldUps
{
public:
    HoldUps()
    {
        m_turns.setInterval(0);
        QObject::connect(&m_turns, &QTimer::timeout, [this] {
            m_longest = std::max(m_longest, m_sinceTurn.nsecsElapsed());
            m_sinceTurn.start();
        });
        m_sinceTurn.start();
        m_turns.start();
    }

    [[nodiscard]] double milliseconds() const { return double(m_longest) / 1e6; }

private:
    QTimer m_turns;
    QElapsedTimer m_sinceTurn;
    qint64 m_longest = 0;
};

struct Times
{
    double firstSample = 0;
    double stop = 0;
};

QCoro::Task<Times> recordBriefly(AudioRecorder *recorder)
{
    const auto nanoseconds = std::make_shared<std::atomic<qint64>>(0);
    QElapsedTimer timer;
    timer.start();
    recorder->setChunks(1e-9, [nanoseconds, timer](const std::vector<float> &) {
        qint64 none = 0;
        nanoseconds->compare_exchange_strong(none, timer.nsecsElapsed());
    });
    co_await recorder->start();
    while (*nanoseconds == 0)
        co_await sleepFor(5ms);
    timer.start();
    (void)co_await recorder->stop();
    co_return Times{.firstSample = double(*nanoseconds) / 1e6, .stop = double(timer.nsecsElapsed()) / 1e6};
}

QCoro::Task<> measure(AudioRecorder *recorder, std::chrono::seconds length)
{
    const long before = privateMemory();
    double cold = 0;
    double holdUp = 0;
    std::vector<double> warm;
    std::vector<double> stops;
    {
        const HoldUps holdUps;
        cold = (co_await recordBriefly(recorder)).firstSample;
        for (int round = 0; round < warmRounds; ++round) {
            const Times times = co_await recordBriefly(recorder);
            warm.push_back(times.firstSample);
            stops.push_back(times.stop);
        }
        holdUp = holdUps.milliseconds();
    }
    std::ranges::sort(warm);
    std::ranges::sort(stops);

    recorder->setChunks(1, [](const std::vector<float> &) {});
    co_await recorder->start();
    co_await sleepFor(2s);
    const long begin = privateMemory();
    const double busy = processorSeconds();
    co_await sleepFor(length);
    const double percent = (processorSeconds() - busy) / double(length.count()) * 100;
    const long end = privateMemory();
    (void)co_await recorder->stop();
    std::printf("{\"coldMs\": %.1f, \"warmMs\": %.1f, \"slowestWarmMs\": %.1f, \"stopMs\": %.1f, "
                "\"longestHoldUpMs\": %.1f, "
                "\"processorPercent\": %.2f, \"idleKiB\": %ld, \"beginKiB\": %ld, \"endKiB\": %ld}\n",
                cold, warm[warmRounds / 2], warm.back(), stops[warmRounds / 2], holdUp, percent, before,
                begin, end);
}

QCoro::Task<> run(AudioRecorder *recorder, std::chrono::seconds length)
{
    try {
        co_await measure(recorder, length);
        QCoreApplication::exit(0);
    } catch (const Error &error) {
        std::fprintf(stderr, "%s\n", error.what());
        QCoreApplication::exit(1);
    }
}

} // namespace

int main(int argc, char **argv)
{
    if (argc < 2) {
        std::fputs("usage: bench-capture MODULE-FOLDER [SECONDS]\n", stderr);
        return 2;
    }
    const QCoreApplication application(argc, argv);
    AudioRecorder recorder(QFile::decodeName(argv[1]));
    const std::chrono::seconds length(argc > 2 ? std::atoi(argv[2]) : 10);
    QMetaObject::invokeMethod(&recorder, [&] { spawn(run(&recorder, length)); }, Qt::QueuedConnection);
    return QCoreApplication::exec();
}
