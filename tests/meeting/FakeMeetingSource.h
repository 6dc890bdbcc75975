#pragma once

#include "audio/SampleRate.h"
#include "base/Async.h"
#include "meeting/MeetingSource.h"

#include <memory>
#include <mutex>

namespace orvane {

/// A microphone that hears what a test feeds it, and fails when the test wants it to.
class FakeMeetingSource : public MeetingSource
{
public:
    /// Shared with the test, which outlives the source or not.
    struct Control
    {
        FakeMeetingSource *current = nullptr; ///< the newest source; null when gone
        QString startError;                   ///< what start() throws; nothing when empty
        int stopMs = 0;                       ///< how long stop() takes
    };

    explicit FakeMeetingSource(std::shared_ptr<Control> control) : m_control(std::move(control))
    {
        m_control->current = this;
    }
    ~FakeMeetingSource() override
    {
        if (m_control->current == this)
            m_control->current = nullptr;
    }

    void setChunks(double seconds, ChunkHandler handler) override
    {
        const std::scoped_lock locked(m_lock);
        m_chunkSeconds = seconds;
        m_handler = std::move(handler);
    }
    [[nodiscard]] QCoro::Task<> start() override
    {
        const QString error = m_control->startError;
        co_await sleepFor(std::chrono::milliseconds(1));
        if (!error.isEmpty())
            throw Error(error);
    }
    [[nodiscard]] QCoro::Task<> stop() override
    {
        co_await sleepFor(std::chrono::milliseconds(m_control->stopMs));
    }
    void flushChunk() override
    {
        const std::scoped_lock locked(m_lock);
        handOut();
    }
    [[nodiscard]] float level() const override { return 0.5F; }
    [[nodiscard]] QList<float> waveform() const override { return {0.5F}; }
    [[nodiscard]] bool isSilent() const override { return m_isSilent; }

    /// On any thread, and from it: the next seconds of a sound of which each part differs from every other.
    void hear(double seconds)
    {
        const size_t end = m_heard + static_cast<size_t>(seconds * sampleRate);
        while (m_heard < end) {
            const std::scoped_lock locked(m_lock);
            for (size_t i = 0; i < piece && m_heard < end; ++i)
                m_pending.push_back(sample(storedSample(m_heard++)));
            if (static_cast<double>(m_pending.size()) >= m_chunkSeconds * sampleRate)
                handOut();
        }
    }
    /// The sound as a WAV file stores it.
    [[nodiscard]] static qint16 storedSample(size_t index)
    {
        return static_cast<qint16>(static_cast<qint64>(index * 40'503 % 65'521) - 32'760);
    }

    void setSilent(bool silent)
    {
        m_isSilent = silent;
        Q_EMIT isSilentChanged();
    }
    void endByItself(const QString &reason) { Q_EMIT endedByItself(reason); }

private:
    static constexpr size_t piece = 1600;

    /// In the middle of what is stored as that number.
    [[nodiscard]] static float sample(qint16 stored)
    {
        return (static_cast<float>(stored) + (stored < 0 ? -0.5F : 0.5F)) / 32'767;
    }
    /// Under the lock, so that the chunks stay in order.
    void handOut()
    {
        if (m_handler)
            m_handler(std::exchange(m_pending, {}));
    }

    const std::shared_ptr<Control> m_control;
    std::mutex m_lock; // guards the next three
    double m_chunkSeconds = 0;
    ChunkHandler m_handler;
    std::vector<float> m_pending;

    size_t m_heard = 0;
    bool m_isSilent = false;
};

} // namespace orvane
