#include "models/DownloadState.h"

#include "base/files/FileError.h"
#include "base/files/FileReplacement.h"

#include <QSysInfo>

#include <chrono>

using namespace std::chrono_literals;

namespace orvane {

namespace {

constexpr auto saveInterval = 1s;
constexpr double reportStep = 0.001;
constexpr auto reportInterval = 16ms;
constexpr auto lookInterval = 1s;

} // namespace

DownloadState::DownloadState(DownloadMeta meta, QString recordPath, Report report)
    : m_meta(std::move(meta)),
      m_writtenBefore(m_meta.written),
      m_recordPath(std::move(recordPath)),
      m_report(std::move(report)),
      m_nextSave(saveInterval),
      m_totalWritten(m_meta.totalWritten()),
      m_rate(m_totalWritten)
{
    this->report();
}

void DownloadState::add(qint64 bytes, qsizetype segment)
{
    if (m_isDistrusted)
        return;
    m_meta.written[segment] += bytes;
    m_totalWritten += bytes;
    if (m_nextSave.hasExpired())
        save(Bytes::WithTheSystem);
    report();
}

void DownloadState::beginAnew(std::optional<QString> etag)
{
    m_meta = DownloadMeta::fresh(std::move(etag), {{0, m_meta.total - 1}});
    m_writtenBefore = m_meta.written;
    m_totalWritten = 0;
    m_lastReported = -1;
    m_rate = TransferRate(0);
    save(Bytes::WithTheSystem);
    report();
}

void DownloadState::distrust()
{
    m_isDistrusted = true;
    m_meta.written = m_writtenBefore;
    m_totalWritten = m_meta.totalWritten();
}

void DownloadState::report()
{
    const double fraction = static_cast<double>(m_totalWritten) / static_cast<double>(m_meta.total);
    const bool complete = fraction >= 1.0 && m_lastReported < 1.0;
    const bool hasGained = fraction - m_lastReported >= reportStep && m_nextReport.hasExpired();
    m_rate.update(m_totalWritten);
    const bool isSlower = m_rate.bytesPerSecond() != m_reportedSpeed && m_nextLook.hasExpired();
    if (!complete && !hasGained && !isSlower)
        return;
    m_nextReport.setRemainingTime(reportInterval);
    m_nextLook.setRemainingTime(lookInterval);
    m_lastReported = fraction;
    m_reportedSpeed = m_rate.bytesPerSecond();
    m_report({.receivedBytes = m_totalWritten,
              .totalBytes = m_meta.total,
              .bytesPerSecond = m_rate.bytesPerSecond(),
              .remainingMs = m_rate.remainingMs(m_meta.total - m_totalWritten)});
}

bool DownloadState::save(Bytes bytes)
{
    m_meta.bootID.reset();
    if (bytes == Bytes::WithTheSystem)
        m_meta.bootID = QString::fromLatin1(QSysInfo::bootUniqueId());
    m_nextSave.setRemainingTime(saveInterval);

    try {
        // Without waiting for the disk, which would be busy with everything downloaded in the last second.
        replaceFile(m_recordPath, m_meta.toJson(), FileAccess::Usual,
                    bytes == Bytes::OnTheDisk ? Durability::Flushed : Durability::Unflushed);
        return true;
    } catch (const FileError &) {
        return false;
    }
}

} // namespace orvane
