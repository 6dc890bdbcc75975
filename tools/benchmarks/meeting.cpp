// Records a meeting of that many hours as fast as the disk takes it, through all but the device. Prints one
// line of JSON: by how much the memory grew (KiB), the processor time (seconds) and whether the file holds
// exactly what was heard.
//
// usage: bench-meeting FOLDER HOURS

#include "audio/CapturedSamples.h"
#include "audio/LevelMeter.h"
#include "audio/SampleRate.h"
#include "base/Async.h"
#include "meeting/MeetingRecorder.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QtEndian>

#include <cstdio>
#include <sys/resource.h>
#include <thread>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace orvane;

namespace {

constexpr size_t rate = sampleRate;
/// What one buffer of a device becomes at 16 kHz.
constexpr size_t bufferSamples = 1365;
/// The sound repeats itself after so many samples, which no other number here divides.
constexpr size_t period = 99'991;
constexpr qint64 maxBehind = 20 * qint64(rate) * 2; // bytes

qint16 storedAt(size_t index)
{
    return static_cast<qint16>(static_cast<qint64>(index % period * 40'503 % 65'521) - 32'760);
}

/// Hears one sample after the other, as fast as they are written.
class HastySource : public MeetingSource
{
public:
    HastySource(const QString &path, size_t samples) : m_path(path), m_count(samples), m_sound(2 * period)
    {
        for (size_t i = 0; i < m_sound.size(); ++i)
            m_sound[i] = (float(storedAt(i)) + (storedAt(i) < 0 ? -0.5F : 0.5F)) / 32'767;
    }

    void setChunks(double seconds, ChunkHandler handler) override
    {
        m_captured.setChunks(seconds, std::move(handler));
    }
    QCoro::Task<> start() override
    {
        m_thread = std::jthread([this] { hear(); });
        co_return;
    }
    QCoro::Task<> stop() override
    {
        co_await offMainThread([this] { m_thread.join(); });
    }
    void flushChunk() override { m_captured.flushChunk(); }
    float level() const override { return 0; }
    QList<float> waveform() const override { return {}; }
    bool isSilent() const override { return false; }

private:
    void hear()
    {
        LevelMeter meter;
        for (size_t heard = 0; heard < m_count; heard += bufferSamples) {
            const std::span samples(m_sound.data() + heard % period,
                                    std::min(bufferSamples, m_count - heard));
            meter.add(samples, [](float) {});
            m_captured.add(samples);
            while (qint64(heard) * 2 - QFileInfo(m_path).size() > maxBehind)
                std::this_thread::sleep_for(1ms);
        }
    }

    const QString m_path;
    const size_t m_count;
    std::vector<float> m_sound;
    CapturedSamples m_captured;
    std::jthread m_thread;
};

bool holdsWhatWasHeard(const QString &path, size_t samples)
{
    QFile file(path);
    if (!file.open(QFile::ReadOnly) || file.size() != 44 + 2 * qint64(samples) || !file.seek(44))
        return false;
    size_t index = 0;
    while (!file.atEnd()) {
        const QByteArray block = file.read(1 << 20);
        for (qsizetype at = 0; at < block.size(); at += 2) {
            if (qFromLittleEndian<qint16>(block.constData() + at) != storedAt(index++))
                return false;
        }
    }
    return index == samples;
}

double processorSeconds()
{
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval &time) { return double(time.tv_sec) + double(time.tv_usec) / 1e6; };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

/// The most that the process has taken so far.
qint64 peakKiB()
{
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

QCoro::Task<> measure(QString path, size_t samples)
{
    MeetingRecorder recorder(std::make_unique<HastySource>(path, samples), RecordedMeeting(), path,
                             [](const QString &) { return qint64(-1); });
    const qint64 peakBefore = peakKiB();
    const double before = processorSeconds();
    co_await recorder.start();
    const bool isWhole = (co_await recorder.finish()).isEmpty();
    const double used = processorSeconds() - before;
    const qint64 growth = peakKiB() - peakBefore;
    const bool isEqual = isWhole && holdsWhatWasHeard(path, samples);
    std::printf("{\"growth_kib\": %lld, \"processor_seconds\": %.2f, \"equal\": %s}\n", growth, used,
                isEqual ? "true" : "false");
    QCoreApplication::quit();
}

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != 3) {
        std::fputs("usage: bench-meeting FOLDER HOURS\n", stderr);
        return 2;
    }
    const QString path = QDir(arguments[1]).filePath(u"meeting.wav"_s);
    const auto samples = static_cast<size_t>(arguments[2].toDouble() * 3600 * double(rate));
    QMetaObject::invokeMethod(qApp, [&] { spawn(measure(path, samples)); }, Qt::QueuedConnection);
    return QCoreApplication::exec();
}
