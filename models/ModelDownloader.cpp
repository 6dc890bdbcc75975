#include "models/ModelDownloader.h"

#include "base/Async.h"

#include <QCoreApplication>
#include <QFile>

namespace orvane {

namespace {

constexpr qint64 mebibyte = 1024 * 1024;

/// Calls `progress` on the main thread, where nothing comes after a stop request.
DownloadState::Progress onMainThread(ModelDownloader::Progress progress, std::stop_token stop)
{
    const auto shared = std::make_shared<ModelDownloader::Progress>(std::move(progress));
    return [shared, stop](double fraction) {
        const auto report = [shared, stop, fraction] {
            if (!stop.stop_requested())
                (*shared)(fraction);
        };
        QMetaObject::invokeMethod(QCoreApplication::instance(), detail::HandedOver(report),
                                  Qt::QueuedConnection);
    };
}

} // namespace

ModelDownloader::ModelDownloader(DownloadOptions options)
    : m_options(options),
      m_totalBytes(std::make_shared<std::atomic<qint64>>(0))
{
    m_pool.setMaxThreadCount(1);
}

ModelDownloader::~ModelDownloader()
{
    interruptAndWait();
}

void ModelDownloader::interruptAndWait()
{
    m_lifetime.request_stop();
    m_pool.waitForDone();
}

QCoro::Task<> ModelDownloader::download(QUrl from, QString to, QByteArray expectedMagic, Progress progress,
                                        std::stop_token stop)
{
    *m_totalBytes = 0;
    std::stop_source either;
    const auto request = [either]() mutable { either.request_stop(); };
    const std::stop_callback byCaller(stop, request);
    const std::stop_callback byDestruction(m_lifetime.get_token(), request);

    DownloadRun::Job job{.from = std::move(from),
                         .to = std::move(to),
                         .expectedMagic = std::move(expectedMagic),
                         .progress = onMainThread(std::move(progress), either.get_token()),
                         .sizeKnown = [total = m_totalBytes](qint64 bytes) { *total = bytes; },
                         .options = m_options,
                         .stop = either.get_token()};
    const auto work = [job] { DownloadRun(job).run(); };
    co_await offMainThread(&m_pool, work);
}

QList<ByteRange> ModelDownloader::splitSegments(qint64 total)
{
    const qint64 count = total < 32 * mebibyte    ? 1
                         : total < 128 * mebibyte ? 2
                         : total < 512 * mebibyte ? 4
                                                  : 6;
    const qint64 length = total / count;
    QList<ByteRange> ranges;
    for (qint64 i = 0; i < count; ++i)
        ranges.append({i * length, i == count - 1 ? total - 1 : (i + 1) * length - 1});
    return ranges;
}

bool ModelDownloader::hasMagic(const QString &file, const QByteArray &magic)
{
    QFile opened(file);
    return opened.open(QFile::ReadOnly) && opened.read(magic.size()) == magic;
}

} // namespace orvane
