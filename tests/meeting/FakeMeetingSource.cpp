#include "tests/meeting/FakeMeetingSource.h"

#include "audio/SampleRate.h"
#include "base/Async.h"

#include <thread>

namespace orvane {

namespace {

constexpr size_t piece = 1600;

} // namespace

FakeMeetingSource::FakeMeetingSource(std::shared_ptr<Control> control) : m_control(std::move(control))
{
    m_control->current = this;
}

FakeMeetingSource::~FakeMeetingSource()
{
    if (m_control->current == this)
        m_control->current = nullptr;
}

void FakeMeetingSource::setChunks(double seconds, ChunkHandler handler)
{
    const std::scoped_lock locked(m_lock);
    m_chunkSeconds = seconds;
    m_handler = std::move(handler);
}

QCoro::Task<> FakeMeetingSource::start()
{
    const QString error = m_control->startError;
    co_await sleepFor(std::chrono::milliseconds(1));
    if (!error.isEmpty())
        throw Error(error);
}

QCoro::Task<> FakeMeetingSource::stop()
{
    co_await sleepFor(std::chrono::milliseconds(m_control->stopMs));
}

void FakeMeetingSource::flushChunk()
{
    const std::scoped_lock locked(m_lock);
    handOut();
}

void FakeMeetingSource::hear(std::span<const float> samples)
{
    const std::scoped_lock locked(m_lock);
    m_pending.insert(m_pending.end(), samples.begin(), samples.end());
    if (static_cast<double>(m_pending.size()) >= m_chunkSeconds * sampleRate)
        handOut();
}

void FakeMeetingSource::handOut()
{
    if (m_handler)
        m_handler(std::exchange(m_pending, {}));
}

void FakeMeetingSource::hearPattern(double seconds)
{
    const size_t end = m_heard + static_cast<size_t>(seconds * sampleRate);
    std::thread([this, end] {
        for (; m_heard < end; m_heard += std::min(piece, end - m_heard))
            hear(pattern(m_heard, std::min(piece, end - m_heard)));
    }).join();
}

void FakeMeetingSource::setSilent(bool silent)
{
    m_isSilent = silent;
    Q_EMIT isSilentChanged();
}

qint16 FakeMeetingSource::storedPattern(size_t index)
{
    return static_cast<qint16>(static_cast<qint64>(index * 40'503 % 65'521) - 32'760);
}

std::vector<float> FakeMeetingSource::pattern(size_t first, size_t count)
{
    std::vector<float> samples(count);
    for (size_t i = 0; i < count; ++i) {
        const qint16 stored = storedPattern(first + i);
        // In the middle of what is stored as that number.
        samples[i] = (static_cast<float>(stored) + (stored < 0 ? -0.5F : 0.5F)) / 32'767;
    }
    return samples;
}

} // namespace orvane
