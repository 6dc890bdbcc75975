#pragma once

#include "meeting/MeetingSource.h"

#include <QString>

#include <memory>
#include <mutex>
#include <span>

namespace orvane {

/// A microphone that hears what a test feeds it, and fails when the test wants it to. The chunks are handed
/// out on another thread, as by the real one.
class FakeMeetingSource : public MeetingSource
{
public:
    /// Shared with the test, which outlives the source or not.
    struct Control
    {
        /// The sources that were made, newest last; null when gone.
        FakeMeetingSource *current = nullptr;
        /// What start() throws; nothing when empty.
        QString startError;
        /// How long stop() takes.
        int stopMs = 0;
    };

    explicit FakeMeetingSource(std::shared_ptr<Control> control);
    ~FakeMeetingSource() override;

    void setChunks(double seconds, ChunkHandler handler) override;
    [[nodiscard]] QCoro::Task<> start() override;
    [[nodiscard]] QCoro::Task<> stop() override;
    void flushChunk() override;
    [[nodiscard]] float level() const override { return 0.5F; }
    [[nodiscard]] QList<float> waveform() const override { return {0.5F}; }
    [[nodiscard]] bool isSilent() const override { return m_isSilent; }

    /// On any thread; the handler is called on it.
    void hear(std::span<const float> samples);
    /// Feeds the next seconds of pattern() from another thread.
    void hearPattern(double seconds);
    void setSilent(bool silent);
    void endByItself(const QString &reason) { Q_EMIT endedByItself(reason); }

    /// A sound of which each part differs from every other, as samples and as a WAV file stores them.
    [[nodiscard]] static std::vector<float> pattern(size_t first, size_t count);
    [[nodiscard]] static qint16 storedPattern(size_t index);

private:
    /// Under the lock, so that the chunks stay in order.
    void handOut();

    const std::shared_ptr<Control> m_control;
    std::mutex m_lock; // guards what follows
    double m_chunkSeconds = 0;
    ChunkHandler m_handler;
    std::vector<float> m_pending;

    size_t m_heard = 0;
    bool m_isSilent = false;
};

} // namespace orvane
