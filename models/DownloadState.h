#pragma once

#include "models/DownloadMeta.h"
#include "models/DownloadProgress.h"
#include "models/TransferRate.h"

#include <QDeadlineTimer>

#include <functional>

namespace orvane {

/// What the segments of one download have in common: it counts their bytes, keeps the resume record on
/// disk no more than a second behind, and reports progress. Belongs to the download's thread.
class DownloadState
{
public:
    /// Called at the beginning, at the end, and between them for a thousandth of the file or more gained, no
    /// more often than a window can show it; and while less than that comes, whenever the speed has changed
    /// over a second.
    using Report = std::function<void(const DownloadProgress &)>;

    DownloadState(DownloadMeta meta, QString recordPath, Report report);

    [[nodiscard]] const DownloadMeta &meta() const { return m_meta; }

    /// `bytes` more of the segment lie in the partial file.
    void add(qint64 bytes, qsizetype segment);
    /// What was there is of no use: the file comes whole, under that tag.
    void beginAnew(std::optional<QString> etag);
    /// Counts out everything added since the beginning, and what will be added: the server has proved not
    /// to send the file.
    void distrust();

    /// Reports what is gained and not reported yet, when it is time. Also for when no bytes come.
    void report();

    /// Where the bytes counted in the record are: a process may end at any time with both, the power
    /// may fail with the second only.
    enum class Bytes { WithTheSystem, OnTheDisk };
    /// Writes the record now; false when the disk refuses, and then the last one stays. Never half a record.
    bool save(Bytes bytes);

private:
    DownloadMeta m_meta;
    QList<qint64> m_writtenBefore;
    const QString m_recordPath;
    const Report m_report;
    QDeadlineTimer m_nextSave;
    QDeadlineTimer m_nextReport;
    QDeadlineTimer m_nextLook;
    qint64 m_totalWritten;
    TransferRate m_rate;
    double m_lastReported = -1;
    double m_reportedSpeed = 0;
    bool m_isDistrusted = false;
};

} // namespace orvane
