#pragma once

#include <QObject>

namespace orvane {

/// How far a running download is, as views show it.
struct DownloadProgress
{
    Q_GADGET
    Q_PROPERTY(qint64 receivedBytes MEMBER receivedBytes)
    Q_PROPERTY(qint64 totalBytes MEMBER totalBytes)
    Q_PROPERTY(double fraction READ fraction)
    Q_PROPERTY(double bytesPerSecond MEMBER bytesPerSecond)
    Q_PROPERTY(qint64 remainingMs MEMBER remainingMs)
    Q_PROPERTY(bool isWaitingForNetwork MEMBER isWaitingForNetwork)

public:
    /// With what earlier attempts have brought.
    qint64 receivedBytes = 0;
    /// 0 until the server has answered.
    qint64 totalBytes = 0;
    /// Over the last seconds; 0 while unknown.
    double bytesPerSecond = 0;
    /// Milliseconds to the end; −1 while unknown.
    qint64 remainingMs = -1;
    /// Nothing has begun, because this machine is connected to no network. It begins by itself.
    bool isWaitingForNetwork = false;

    [[nodiscard]] double fraction() const
    {
        return totalBytes > 0 ? double(receivedBytes) / double(totalBytes) : 0;
    }

    bool operator==(const DownloadProgress &) const = default;
};

} // namespace orvane
