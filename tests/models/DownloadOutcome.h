#pragma once

#include "models/ModelDownloader.h"
#include "tests/support/Files.h"

#include <QTest>

#include <memory>
#include <optional>

namespace orvane::test {

constexpr qint64 mebibyte = 1024 * 1024;

/// How a download ended, and what it reported meanwhile.
struct DownloadOutcome
{
    bool hasEnded = false;
    bool wasCancelled = false;
    std::optional<DownloadError::Kind> failure;
    QString description;
    QList<DownloadProgress> progress;

    [[nodiscard]] bool succeeded() const { return hasEnded && !wasCancelled && !failure; }
    [[nodiscard]] double fraction() const { return progress.isEmpty() ? 0 : progress.last().fraction(); }
};

inline std::shared_ptr<DownloadOutcome> startDownload(ModelDownloader &downloader, const QUrl &from,
                                                      const QString &to, std::stop_token stop = {})
{
    const auto outcome = std::make_shared<DownloadOutcome>();
    const auto progress = [outcome](const DownloadProgress &reached) { outcome->progress.append(reached); };
    [](QCoro::Task<> download, std::shared_ptr<DownloadOutcome> outcome) -> QCoro::Task<> {
        try {
            co_await std::move(download);
        } catch (const Cancelled &) {
            outcome->wasCancelled = true;
        } catch (const DownloadError &error) {
            outcome->failure = error.kind();
            outcome->description = error.description();
        }
        outcome->hasEnded = true;
    }(downloader.download(from, to, "GGUF", progress, stop), outcome);
    return outcome;
}

/// Waits for the end; a download that does not come to it fails the test.
inline DownloadOutcome finish(const std::shared_ptr<DownloadOutcome> &outcome)
{
    if (!QTest::qWaitFor([&] { return outcome->hasEnded; }, 60'000))
        QTest::qFail("the download does not end", __FILE__, __LINE__);
    return *outcome;
}

} // namespace orvane::test
