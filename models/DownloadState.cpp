#include "models/DownloadState.h"

#include "models/PartFile.h"

#include <QFile>
#include <QSysInfo>

#include <chrono>
#include <filesystem>

using namespace std::chrono_literals;

namespace orvane {

namespace {

constexpr auto saveInterval = 1s;
constexpr double reportStep = 0.001;
constexpr auto reportInterval = 16ms;

} // namespace

DownloadState::DownloadState(DownloadMeta meta, QString recordPath, Progress progress)
    : m_meta(std::move(meta)),
      m_writtenBefore(m_meta.written),
      m_recordPath(std::move(recordPath)),
      m_progress(std::move(progress)),
      m_nextSave(saveInterval),
      m_totalWritten(m_meta.totalWritten())
{
    report();
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
    if (!complete && (fraction - m_lastReported < reportStep || !m_nextReport.hasExpired()))
        return;
    m_nextReport.setRemainingTime(reportInterval);
    m_lastReported = fraction;
    m_progress(fraction);
}

void DownloadState::save(Bytes bytes)
{
    m_meta.bootID.reset();
    if (bytes == Bytes::WithTheSystem)
        m_meta.bootID = QString::fromLatin1(QSysInfo::bootUniqueId());
    m_nextSave.setRemainingTime(saveInterval);

    // Not QSaveFile: it waits for the disk, here behind everything downloaded in the last second.
    const QString draft = PartFile::draftOf(m_recordPath);
    const QByteArray record = m_meta.toJson();
    QFile file(draft);
    const bool isWritten = file.open(QFile::WriteOnly) && file.write(record) == record.size() && file.flush();
    file.close();
    if (!isWritten) {
        QFile::remove(draft); // the open file would refuse while it has bytes to write
        return;
    }

    std::error_code failure;
    std::filesystem::rename(QFile::encodeName(draft).constData(), QFile::encodeName(m_recordPath).constData(),
                            failure);
}

} // namespace orvane
