#include "app/commandline/TransferRate.h"

namespace orvane {

namespace {

// Weight of the newest measurement: with some updates a second, the last few seconds count.
constexpr double weight = 0.1;

} // namespace

void TransferRate::update(double bytes)
{
    if (bytes <= 0)
        return; // what an earlier attempt has brought, told a moment later, counts as no speed
    const double seconds = m_sinceLast.isValid() ? double(m_sinceLast.restart()) / 1000 : 0;
    if (!m_sinceLast.isValid())
        m_sinceLast.start();
    if (seconds > 0) {
        const double now = (bytes - m_lastBytes) / seconds;
        m_bytesPerSecond = m_bytesPerSecond > 0 ? (1 - weight) * m_bytesPerSecond + weight * now : now;
    }
    m_lastBytes = bytes;
}

qint64 TransferRate::remainingMs(double bytes) const
{
    return m_bytesPerSecond > 0 ? qint64(bytes / m_bytesPerSecond * 1000) : -1;
}

} // namespace orvane
