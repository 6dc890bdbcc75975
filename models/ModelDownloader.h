#pragma once

#include "base/Scope.h"
#include "models/DownloadError.h"
#include "models/DownloadRun.h"

#include <QThreadPool>

#include <QCoroTask>

namespace orvane {

/// Downloads one file in up to six parallel ranges, so that it can be resumed after any interruption: into
/// "….part", with a record of what it holds in "….part.meta". Only a file of the right size that begins with
/// the expected bytes gets the destination's name. Main thread; the work has a thread of its own.
class ModelDownloader
{
public:
    /// Called on the main thread, never after the end.
    using Progress = DownloadState::Report;

    explicit ModelDownloader(DownloadOptions options = {});
    /// Interrupts a running download as a stop request does, and waits until its record is saved.
    ~ModelDownloader();

    /// Throws DownloadError, or Cancelled after a stop request; what was downloaded then stays for the next
    /// attempt, but for a file without the magic. `discard` ends it too, and nothing is kept. One at a time.
    [[nodiscard]] QCoro::Task<> download(QUrl from, QString to, QByteArray expectedMagic, Progress progress,
                                         std::stop_token stop = {}, std::stop_token discard = {});

    /// Puts a file of this machine there, in the same way, but from its start each time.
    [[nodiscard]] QCoro::Task<> copy(QString from, QString to, Progress progress, std::stop_token stop = {},
                                     std::stop_token discard = {});

    void interruptAndWait();

private:
    const DownloadOptions m_options;
    QThreadPool m_pool;
    Scope m_scope;
};

} // namespace orvane
