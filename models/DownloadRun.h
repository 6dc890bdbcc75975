#pragma once

#include "models/DownloadSession.h"
#include "models/DownloadState.h"

#include <QByteArray>
#include <QString>
#include <QUrl>

#include <functional>
#include <stop_token>

namespace orvane {

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
        /// Both are called on the download's thread; the size is in bytes.
        DownloadState::Progress progress;
        std::function<void(qint64)> sizeKnown;
        DownloadOptions options;
        std::stop_token stop;
    };

    explicit DownloadRun(Job job);

    /// Throws DownloadError, or Cancelled when stop was requested. The partial file and its record then
    /// stay for the next attempt, but for a file of the wrong kind.
    void run();

private:
    struct Probe
    {
        qint64 total;
        std::optional<QString> etag;
        /// False: the server only gives the whole file.
        bool givesRanges;
    };

    /// Asks for the first byte to learn about the file; its body is never fetched.
    [[nodiscard]] Probe probe();
    /// How far an earlier attempt has come, when it was for the same file and can be gone on with.
    [[nodiscard]] std::optional<DownloadMeta> resumable(const Probe &probe, const PartFile &part) const;
    [[nodiscard]] DownloadMeta begin(const Probe &probe, PartFile &part) const;
    void requireSpace(const PartFile &part, qint64 total) const;
    void fetch(const Probe &probe, PartFile &part, DownloadState &state);
    void fetchMissing(const Probe &probe, PartFile &part, DownloadState &state);
    void complete(PartFile &part, qint64 total) const;

    const Job m_job;
    DownloadSession m_session;
};

} // namespace orvane
