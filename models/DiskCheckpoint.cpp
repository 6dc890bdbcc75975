#include "models/DiskCheckpoint.h"

#include "base/files/FileError.h"
#include "base/files/FileReplacement.h"
#include "models/PartFile.h"

#include <system_error>

namespace orvane {

DiskCheckpoint::DiskCheckpoint(PartFile &part, QString recordPath, std::chrono::milliseconds interval)
    : m_part(part),
      m_recordPath(std::move(recordPath)),
      m_interval(interval),
      m_next(interval)
{}

void DiskCheckpoint::offer(const DownloadMeta &meta)
{
    if (m_isBusy || !m_next.hasExpired() || meta.totalWritten() == m_lastOffered)
        return;
    m_lastOffered = meta.totalWritten();
    m_next.setRemainingTime(m_interval);
    m_isBusy = true;
    DownloadMeta kept = meta;
    kept.bootID.reset();
    try {
        m_thread = std::jthread([this, record = kept.toJson()] {
            take(record);
            m_isBusy = false;
        });
    } catch (const std::system_error &) {
        m_isBusy = false; // no thread now; there may be one for the next
    }
}

void DiskCheckpoint::finish()
{
    m_next = QDeadlineTimer(QDeadlineTimer::Forever);
    if (m_thread.joinable())
        m_thread.join();
}

void DiskCheckpoint::take(const QByteArray &record)
{
    try {
        if (m_part.flush())
            replaceFile(m_recordPath, record, FileAccess::Usual);
    } catch (const FileError &) {
        // the last one stays
    }
}

} // namespace orvane
