#include "models/ModelDownloader.h"

#include "base/AnyStop.h"
#include "base/Async.h"
#include "models/ModelImport.h"

#include <QCoreApplication>

#include <memory>

namespace orvane {

namespace {

/// Calls `progress` on the main thread, where nothing comes after a stop request.
DownloadState::Report onMainThread(ModelDownloader::Progress progress, std::stop_token stop)
{
    const auto shared = std::make_shared<ModelDownloader::Progress>(std::move(progress));
    return [shared, stop](const DownloadProgress &reached) {
        const auto report = [shared, stop, reached] {
            if (!stop.stop_requested())
                (*shared)(reached);
        };
        QMetaObject::invokeMethod(QCoreApplication::instance(), detail::HandedOver(report),
                                  Qt::QueuedConnection);
    };
}

} // namespace

ModelDownloader::ModelDownloader(DownloadOptions options) : m_options(options)
{
    m_pool.setMaxThreadCount(1);
}

ModelDownloader::~ModelDownloader()
{
    interruptAndWait();
}

void ModelDownloader::interruptAndWait()
{
    m_scope.end();
    waitForDone(m_pool);
}

QCoro::Task<> ModelDownloader::download(QUrl from, QString to, QByteArray expectedMagic, Progress progress,
                                        std::stop_token stop, std::stop_token discard)
{
    const AnyStop any(stop, discard, m_scope.stop());
    DownloadRun::Job job{.from = std::move(from),
                         .to = std::move(to),
                         .expectedMagic = std::move(expectedMagic),
                         .report = onMainThread(std::move(progress), any.token()),
                         .options = m_options,
                         .stop = any.token(),
                         .discard = discard};
    const auto work = [job] { DownloadRun(job).run(); };
    co_await offMainThread(&m_pool, work);
}

QCoro::Task<> ModelDownloader::copy(QString from, QString to, Progress progress, std::stop_token stop,
                                    std::stop_token discard)
{
    const AnyStop any(stop, discard, m_scope.stop());
    const auto work = [from, to, report = onMainThread(std::move(progress), any.token()),
                       token = any.token()] { ModelImport::copy(from, to, report, token); };
    co_await offMainThread(&m_pool, work);
}

} // namespace orvane
