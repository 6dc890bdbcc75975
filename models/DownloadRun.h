#pragma once

#include "models/DownloadSession.h"
#include "models/DownloadState.h"

#include <QByteArray>
#include <QString>
#include <QUrl>

#include <functional>
#include <memory>
#include <stop_token>
#include <vector>

namespace orvane {

class DiskCheckpoint;
class PartFile;
class SegmentStream;

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
    /// Asks again while the answer does not fit what is there.
    [[nodiscard]] Probe confirmed(Probe found, const PartFile &part);
    /// How far an earlier attempt has come, as far as that can be trusted; of whichever file it was.
    [[nodiscard]] std::optional<DownloadMeta> kept(const PartFile &part) const;
    [[nodiscard]] static bool continues(const Probe &probe, const DownloadMeta &kept);
    [[nodiscard]] DownloadMeta begin(const Probe &probe, PartFile &part) const;
    void requireSpace(const PartFile &part, qint64 total) const;
    void fetch(const Probe &probe, PartFile &part);
    void fetchMissing(PartFile &part, DownloadState &state, DiskCheckpoint &checkpoint);
    /// What is there stays until the server has begun to send the whole file.
    void fetchWhole(PartFile &part, DownloadState &state, DiskCheckpoint &checkpoint);
    void transfer(std::vector<std::unique_ptr<SegmentStream>> streams, DownloadState &state,
                  const std::function<void()> &afterRound);
    void keep(PartFile &part, DownloadState &state, DiskCheckpoint &checkpoint) const;
    void complete(PartFile &part, qint64 total) const;

    const Job m_job;
    DownloadSession m_session;
};

} // namespace orvane
