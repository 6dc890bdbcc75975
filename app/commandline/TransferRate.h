#pragma once

#include <QElapsedTimer>

namespace orvane {

/// The speed of a transfer over its last seconds, and what it means for the rest.
class TransferRate
{
public:
    /// Tells how much has arrived in all, in bytes; call it a few times a second.
    void update(double bytes);

    /// Bytes per second; 0 while unknown.
    [[nodiscard]] double bytesPerSecond() const { return m_bytesPerSecond; }
    /// Milliseconds for that many bytes more; −1 while unknown.
    [[nodiscard]] qint64 remainingMs(double bytes) const;

private:
    QElapsedTimer m_sinceLast;
    double m_lastBytes = 0;
    double m_bytesPerSecond = 0;
};

} // namespace orvane
