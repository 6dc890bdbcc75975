#include "audio/CapturedSamples.h"

#include "audio/SampleRate.h"

#include <algorithm>
#include <new>
#include <utility>

namespace orvane {

void CapturedSamples::setChunks(double seconds, ChunkHandler handler)
{
    auto shared = handler ? std::make_shared<const ChunkHandler>(std::move(handler)) : nullptr;
    const std::lock_guard lock(m_mutex);
    // Of a chunk shorter than a sample, every delivery is one.
    m_chunkSize = seconds > 0 ? std::max(size_t(seconds * sampleRate), size_t(1)) : 0;
    m_handler.swap(shared);
}

void CapturedSamples::add(std::span<const float> samples) noexcept
{
    size_t minSize = 0;
    try {
        const std::lock_guard lock(m_mutex);
        std::vector<float> &target = m_chunkSize > 0 ? m_chunk : m_all;
        target.insert(target.end(), samples.begin(), samples.end());
        minSize = m_chunkSize;
    } catch (const std::bad_alloc &) {
        return; // What is there stays; there may be memory for the next ones.
    }
    if (minSize > 0)
        handOut(minSize);
}

void CapturedSamples::flushChunk() noexcept
{
    handOut(1);
}

void CapturedSamples::handOut(size_t minSize) noexcept
{
    try {
        const std::lock_guard order(m_order);
        std::unique_lock lock(m_mutex);
        if (!m_handler || m_chunk.size() < minSize)
            return;
        // A copy of the right size goes out; the room stays for the next chunk.
        std::vector<float> chunk(m_chunk);
        m_chunk.clear();
        const std::shared_ptr<const ChunkHandler> handler = m_handler;
        lock.unlock();
        (*handler)(std::move(chunk));
    } catch (const std::bad_alloc &) {
        // They stay for the next chunk.
    }
}

void CapturedSamples::clear()
{
    const std::lock_guard lock(m_mutex);
    m_all.clear();
    m_chunk.clear();
}

std::vector<float> CapturedSamples::part(size_t first, size_t count)
{
    const std::lock_guard lock(m_mutex);
    const auto rest = std::span(m_all).subspan(std::min(first, m_all.size()));
    const auto part = rest.first(std::min(count, rest.size()));
    return {part.begin(), part.end()};
}

std::vector<float> CapturedSamples::takeAll()
{
    const std::lock_guard lock(m_mutex);
    return std::exchange(m_all, {});
}

} // namespace orvane
