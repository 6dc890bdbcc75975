#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <span>
#include <vector>

namespace orvane {

/// Where recorded samples (16 kHz mono) gather: all of them, or in chunks that are handed out. Any thread.
class CapturedSamples
{
public:
    using ChunkHandler = std::function<void(std::vector<float>)>;

    /// See AudioRecorder::setChunks.
    void setChunks(double seconds, ChunkHandler handler);

    /// The handler is called on this thread with each chunk that is full. Without memory the samples are
    /// lost.
    void add(std::span<const float> samples) noexcept;

    /// Hands out now, on this thread, what no chunk has held yet, in its order with all other chunks. Not
    /// from within the handler.
    void flushChunk() noexcept;

    /// Forgets everything that was added.
    void clear();

    /// A copy of what takeAll() would return, but for so many samples at its beginning, and at most so many.
    [[nodiscard]] std::vector<float> part(size_t first, size_t count);

    /// All that was added while there were no chunks; nothing of it is kept.
    [[nodiscard]] std::vector<float> takeAll();

private:
    void handOut(size_t minSize) noexcept;

    std::mutex m_order;     // held while a chunk is taken and handed out, so that none overtakes another
    std::mutex m_mutex;     // guards everything below
    size_t m_chunkSize = 0; // 0: no chunks
    std::shared_ptr<const ChunkHandler> m_handler;
    std::vector<float> m_all;
    std::vector<float> m_chunk;
};

} // namespace orvane
