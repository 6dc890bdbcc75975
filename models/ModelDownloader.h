#pragma once

#include "models/DownloadError.h"
#include "models/DownloadRun.h"

#include <QThreadPool>

#include <QCoroTask>

#include <atomic>
#include <memory>

namespace orvane {

/// Downloads one file in up to six parallel ranges, so that it can be gone on with after any interruption:
/// into "….part", with a record of what it holds in "….part.meta". Only a file of the right size that
/// begins with the expected bytes gets the destination's name. Main thread; the work has a thread of its own.
class ModelDownloader
{
public:
    /// Called on the main thread with a fraction 0…1, never after the end.
    using Progress = DownloadState::Progress;

    explicit ModelDownloader(DownloadOptions options = {});
    /// Interrupts a running download as a stop request does, and waits until its record is saved.
    ~ModelDownloader();

    /// Throws DownloadError, or Cancelled after a stop request; what was downloaded then stays for the next
    /// attempt, but for a file without the magic. One at a time.
    [[nodiscard]] QCoro::Task<> download(QUrl from, QString to, QByteArray expectedMagic, Progress progress,
                                         std::stop_token stop = {});

    /// Size of the file being downloaded in bytes; 0 until the server has told.
    [[nodiscard]] qint64 totalBytes() const { return *m_totalBytes; }

    void interruptAndWait();

    /// The ranges of a file of `total` bytes, at least 1: the larger, the more, up to six.
    [[nodiscard]] static QList<ByteRange> splitSegments(qint64 total);
    /// Whether the file begins with these bytes; every readable file begins with none.
    [[nodiscard]] static bool hasMagic(const QString &file, const QByteArray &magic);

private:
    const DownloadOptions m_options;
    const std::shared_ptr<std::atomic<qint64>> m_totalBytes;
    std::stop_source m_lifetime;
    QThreadPool m_pool;
};

} // namespace orvane
