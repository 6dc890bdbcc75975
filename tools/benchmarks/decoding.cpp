// Decodes a file and prints one line of JSON: milliseconds, samples, and the peak of the process's private
// memory in KiB.
//
// usage: bench-decode FILE MODULE-FOLDER

#include "audio/AudioDecoder.h"
#include "base/Error.h"

#include <QElapsedTimer>
#include <QFile>

#include <cstdio>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <thread>

namespace {

/// What this process has for itself alone, in KiB.
long privateMemory()
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QFile::ReadOnly))
        return 0;
    const QByteArray all = status.readAll();
    const qsizetype line = all.indexOf("RssAnon:");
    return all.mid(line + 8, all.indexOf("kB", line) - line - 8).trimmed().toLong();
}

/// Looks at the memory every few milliseconds while it lives.
class PeakMemory
{
public:
    [[nodiscard]] long kiB() const { return m_peak; }

private:
    std::atomic<long> m_peak = 0;
    std::jthread m_watcher{[this](const std::stop_token &stop) {
        while (!stop.stop_requested()) {
            m_peak = std::max<long>(m_peak, privateMemory());
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
    }};
};

} // namespace

int main(int argc, char **argv)
{
    if (argc != 3) {
        std::fputs("usage: bench-decode FILE MODULE-FOLDER\n", stderr);
        return 2;
    }
    try {
        const PeakMemory peak;
        QElapsedTimer timer;
        timer.start();
        const orvane::AudioDecoder decoder(QFile::decodeName(argv[2]));
        const std::vector<float> samples = decoder.decode(QFile::decodeName(argv[1])).samples;
        const qint64 milliseconds = timer.elapsed();

        std::printf("{\"milliseconds\": %lld, \"samples\": %zu, \"peakKiB\": %ld}\n",
                    static_cast<long long>(milliseconds), samples.size(),
                    std::max(peak.kiB(), privateMemory()));
    } catch (const orvane::Error &error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
    return 0;
}
