#pragma once

#include <QtGlobal>

#include <chrono>

namespace orvane {

/// The speed of a transfer over its last seconds, and what it means for the rest.
class TransferRate
{
public:
    using Clock = std::chrono::steady_clock;

    /// `bytes`: what was there before.
    explicit TransferRate(qint64 bytes, Clock::time_point now = Clock::now());

    /// `bytes` are there in all. Call it as often as you like.
    void update(qint64 bytes, Clock::time_point now = Clock::now());

    /// Bytes per second; 0 while unknown, and when nothing has come for some seconds.
    [[nodiscard]] double bytesPerSecond() const { return m_bytesPerSecond; }
    /// Milliseconds for that many bytes more; −1 while unknown.
    [[nodiscard]] qint64 remainingMs(qint64 bytes) const;

private:
    qint64 m_lastBytes;
    Clock::time_point m_lastTime;
    Clock::time_point m_lastGain;
    double m_bytesPerSecond = 0;
};

} // namespace orvane
