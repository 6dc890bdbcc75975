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

    /// The handler is called on this thread, outside the lock. Without memory the samples are lost.
    void add(std::span<const float> samples) noexcept;

    /// Forgets everything that was added.
    void clear();

    /// All that was added while there were no chunks; nothing of it is kept.
    [[nodiscard]] std::vector<float> takeAll();
    /// What no chunk has held yet; nothing of it is kept.
    [[nodiscard]] std::vector<float> takePendingChunk();

private:
    std::mutex m_mutex;
    size_t m_chunkSize = 0; // 0: no chunks
    std::shared_ptr<const ChunkHandler> m_handler;
    std::vector<float> m_all;
    std::vector<float> m_chunk;
};

} // namespace orvane
