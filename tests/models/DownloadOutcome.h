#pragma once

#include "models/ModelDownloader.h"

#include <QDir>
#include <QTest>

#include <memory>
#include <optional>

namespace orvane::test {

/// How a download ended, and what it reported meanwhile.
struct DownloadOutcome
{
    bool hasEnded = false;
    bool wasCancelled = false;
    std::optional<DownloadError::Kind> failure;
    QString description;
    QList<double> progress;
    DownloadProgress last;
    bool reportedElsewhere = false;

    [[nodiscard]] bool succeeded() const { return hasEnded && !wasCancelled && !failure; }
};

namespace detail {

inline QCoro::Task<> follow(ModelDownloader *downloader, QUrl from, QString to, QByteArray magic,
                            std::shared_ptr<DownloadOutcome> outcome, std::stop_token stop)
{
    const auto progress = [outcome](const DownloadProgress &reached) {
        outcome->progress.append(reached.fraction());
        outcome->last = reached;
        outcome->reportedElsewhere |= QThread::currentThread() != QCoreApplication::instance()->thread();
    };
    try {
        co_await downloader->download(from, to, magic, progress, stop);
    } catch (const Cancelled &) {
        outcome->wasCancelled = true;
    } catch (const DownloadError &error) {
        outcome->failure = error.kind();
        outcome->description = error.description();
    }
    outcome->hasEnded = true;
}

} // namespace detail

inline std::shared_ptr<DownloadOutcome> startDownload(ModelDownloader &downloader, const QUrl &from,
                                                      const QString &to, const QByteArray &magic = "GGUF",
                                                      std::stop_token stop = {})
{
    auto outcome = std::make_shared<DownloadOutcome>();
    detail::follow(&downloader, from, to, magic, outcome, stop);
    return outcome;
}

/// Waits for the end; a download that does not come to it fails the test.
inline DownloadOutcome finish(const std::shared_ptr<DownloadOutcome> &outcome)
{
    if (!QTest::qWaitFor([&] { return outcome->hasEnded; }, 60'000))
        QTest::qFail("the download does not end", __FILE__, __LINE__);
    return *outcome;
}

inline QByteArray fileContent(const QString &path)
{
    QFile file(path);
    return file.open(QFile::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace orvane::test
