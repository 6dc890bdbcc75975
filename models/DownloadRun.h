#pragma once

#include "models/DownloadSession.h"
#include "models/DownloadState.h"

#include <QByteArray>
#include <QString>
#include <QUrl>

#include <stop_token>

namespace orvane {

class DiskCheckpoint;
class PartFile;

/// One download from its first request to the file's final name, on the thread that calls run().
class DownloadRun
{
public:
    struct Job
    {
        QUrl from;
        QString to;
        /// What the file must begin with; empty: anything.
        QByteArray expectedMagic;
        /// Called on the download's thread.
        DownloadState::Report report;
        DownloadOptions options;
        std::stop_token stop;
        /// Stopped besides `stop`: nothing is kept.
        std::stop_token discard;
    };

    explicit DownloadRun(Job job);

    /// Throws DownloadError, or Cancelled when stop was requested. The partial file and its record then
    /// stay for the next attempt, but for a file of the wrong kind and a discarded download.
    void run();

private:
    struct Probe
    {
        qint64 total;
        std::optional<QString> etag;
        /// False: the server only gives the whole file.
        bool givesRanges;
    };

    void download();
    /// Waits until there is a network.
    [[nodiscard]] Probe probeWhenConnected();
    /// Asks for the first byte to learn about the file; its body is never fetched.
    [[nodiscard]] Probe probe();
    /// How far an earlier attempt has come, when it was for the same file and can be resumed.
    [[nodiscard]] std::optional<DownloadMeta> resumable(const Probe &probe, const PartFile &part) const;
    [[nodiscard]] DownloadMeta begin(const Probe &probe, PartFile &part) const;
    void requireSpace(const PartFile &part, qint64 total) const;
    void fetch(const Probe &probe, PartFile &part);
    void fetchMissing(const Probe &probe, PartFile &part, DownloadState &state, DiskCheckpoint &checkpoint);
    void keep(PartFile &part, DownloadState &state, DiskCheckpoint &checkpoint) const;
    void complete(PartFile &part, qint64 total) const;

    const Job m_job;
    DownloadSession m_session;
};

} // namespace orvane
