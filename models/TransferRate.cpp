#include "models/TransferRate.h"

#include <cmath>

namespace orvane {

namespace {

/// What lies further back hardly counts.
constexpr double memory = 3;
/// Less says nothing about the speed. Both in seconds.
constexpr double minInterval = 0.2;

} // namespace

TransferRate::TransferRate(qint64 bytes, Clock::time_point now)
    : m_lastBytes(bytes),
      m_lastTime(now),
      m_lastGain(now)
{}

void TransferRate::update(qint64 bytes, Clock::time_point now)
{
    const double seconds = std::chrono::duration<double>(now - m_lastTime).count();
    if (seconds < minInterval)
        return;
    const double speed = double(bytes - m_lastBytes) / seconds;
    const double share = m_bytesPerSecond > 0 ? 1 - std::exp(-seconds / memory) : 1;
    m_bytesPerSecond += share * (speed - m_bytesPerSecond);
    if (bytes > m_lastBytes)
        m_lastGain = now;
    else if (now - m_lastGain >= std::chrono::duration<double>(memory))
        m_bytesPerSecond = 0;
    m_lastBytes = bytes;
    m_lastTime = now;
}

qint64 TransferRate::remainingMs(qint64 bytes) const
{
    return m_bytesPerSecond >= 1 ? qint64(double(bytes) / m_bytesPerSecond * 1000) : -1;
}

} // namespace orvane
