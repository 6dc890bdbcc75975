#pragma once

#include "models/DownloadMeta.h"

#include <QDeadlineTimer>
#include <QString>

#include <atomic>
#include <chrono>
#include <thread>

namespace orvane {

class PartFile;

/// Has the disk take what a download has written, every now and then and while the download goes on, and
/// then writes a record of it. A download is resumed from that after a power failure, when the newer
/// record may count bytes that were in memory only.
class DiskCheckpoint
{
public:
    /// The part outlives this, which waits in its destructor.
    DiskCheckpoint(PartFile &part, QString recordPath, std::chrono::milliseconds interval);

    /// Takes a checkpoint of the bytes counted in `meta` when it is time for another.
    void offer(const DownloadMeta &meta);
    /// No more are taken, and the last one has ended.
    void finish();

private:
    void take(const QByteArray &record);

    PartFile &m_part;
    const QString m_recordPath;
    const std::chrono::milliseconds m_interval;
    QDeadlineTimer m_next;
    qint64 m_lastOffered = 0;
    std::atomic<bool> m_isBusy = false;
    std::jthread m_thread;
};

} // namespace orvane
