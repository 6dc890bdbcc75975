#include "models/ModelCatalogManager.h"

#include "base/Async.h"
#include "base/localization/Localization.h"
#include "models/ModelDownloader.h"
#include "models/PartFile.h"
#include "settings/BuildInfo.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orvane {

using Localization::text;

ModelRepository ModelRepository::ofBuild()
{
    return {.address = BuildInfo::modelRepository, .options = {}};
}

struct ModelCatalogManager::Download
{
    explicit Download(DownloadOptions options) : downloader(options) {}

    ModelDownloader downloader;
    std::stop_source stop;
    /// Cancelled by the user: nothing of it is kept.
    bool isDiscarded = false;
};

ModelCatalogManager::ModelCatalogManager(QList<DownloadableModel> models, QByteArray magic,
                                         const QString &directory, ModelRepository repository,
                                         QObject *parent)
    : QObject(parent),
      m_models(std::move(models)),
      m_magic(std::move(magic)),
      m_directory(directory),
      m_repository(std::move(repository))
{
    refresh();
}

ModelCatalogManager::~ModelCatalogManager()
{
    m_lifetime.request_stop();
    for (const auto &download : std::as_const(m_downloads))
        download->stop.request_stop();
    for (auto [id, download] : m_downloads.asKeyValueRange()) {
        download->downloader.interruptAndWait();
        if (download->isDiscarded)
            PartFile::discard(localPath(id));
    }
}

qint64 ModelCatalogManager::downloadSize(const QString &id) const
{
    const auto download = m_downloads.value(id);
    return download ? download->downloader.totalBytes() : 0;
}

const DownloadableModel *ModelCatalogManager::find(const QString &id) const
{
    const auto found = std::ranges::find(m_models, id, &DownloadableModel::id);
    return found == m_models.end() ? nullptr : &*found;
}

QString ModelCatalogManager::localPath(const QString &id) const
{
    const DownloadableModel *model = find(id);
    return model ? m_directory + u'/' + model->fileName : QString();
}

QUrl ModelCatalogManager::source(const DownloadableModel &model) const
{
    QString address = m_repository.address;
    while (address.endsWith(u'/'))
        address.chop(1);
    if (address.isEmpty())
        throw DownloadError::noRepository();
    const QUrl url(address + model.repositoryPath);
    if ((url.scheme() != u"https" && url.scheme() != u"http") || url.host().isEmpty())
        throw DownloadError::badRepository(address);
    return url;
}

bool ModelCatalogManager::isPartlyDownloaded(const QString &id) const
{
    const QString file = localPath(id);
    return !file.isEmpty() && QFileInfo::exists(PartFile::pathFor(file));
}

void ModelCatalogManager::refresh()
{
    QSet<QString> found;
    for (const DownloadableModel &model : m_models) {
        if (QFileInfo(localPath(model.id)).isFile())
            found.insert(model.id);
    }
    if (found == m_downloaded)
        return;
    m_downloaded = found;
    Q_EMIT downloadedChanged();
}

void ModelCatalogManager::download(const QString &id)
{
    if (!find(id))
        return;
    const auto running = m_downloads.value(id);
    if (!running) {
        spawn(publish(id));
    } else if (running->isDiscarded) {
        m_again.insert(id);
        setProgress(id, 0);
    }
}

void ModelCatalogManager::cancelDownload(const QString &id)
{
    m_again.remove(id);
    clearProgress(id);
    if (const auto running = m_downloads.value(id)) {
        running->isDiscarded = true;
        running->stop.request_stop();
    }
}

void ModelCatalogManager::remove(const QString &id)
{
    spawn(deleteFile(id));
}

QCoro::Task<> ModelCatalogManager::deleteFile(QString id)
{
    const std::stop_token lifetime = m_lifetime.get_token();
    const QString file = localPath(id);
    if (file.isEmpty())
        co_return;
    // Freeing gigabytes takes a disk its time.
    const auto work = [file] {
        QFile::remove(file);
        PartFile::discard(file);
    };
    co_await offMainThread(work);
    throwIfCancelled(lifetime);
    refresh();
}

QCoro::Task<> ModelCatalogManager::publish(QString id)
{
    const std::stop_token lifetime = m_lifetime.get_token();
    do {
        setLastError({});
        QString failure;
        try {
            co_await fetch(id);
        } catch (const Cancelled &) {
            throwIfCancelled(lifetime);
        } catch (const Error &error) {
            failure = error.description();
        }
        if (!failure.isEmpty())
            setLastError(text(u"Не удалось скачать ") + find(id)->displayName + u": "_s + failure);
    } while (m_again.remove(id));
}

QCoro::Task<> ModelCatalogManager::fetch(QString id, std::stop_token stop)
{
    const std::stop_token lifetime = m_lifetime.get_token();
    if (m_downloads.contains(id))
        throw DownloadError::alreadyRunning();
    const auto download = std::make_shared<Download>(m_repository.options);
    m_downloads.insert(id, download);
    setProgress(id, 0);

    const auto forward = [source = download->stop]() mutable { source.request_stop(); };
    const std::stop_callback onStop(stop, forward);
    std::exception_ptr failure;
    try {
        co_await transfer(*find(id), download);
    } catch (...) {
        failure = std::current_exception();
    }
    throwIfCancelled(lifetime);

    if (download->isDiscarded) {
        const auto discard = [destination = localPath(id)] { PartFile::discard(destination); };
        co_await offMainThread(discard);
        throwIfCancelled(lifetime);
    }
    m_downloads.remove(id);
    if (!m_again.contains(id))
        clearProgress(id);
    refresh();
    if (failure)
        std::rethrow_exception(failure);
}

QCoro::Task<> ModelCatalogManager::transfer(DownloadableModel model, std::shared_ptr<Download> download)
{
    const std::stop_token stop = download->stop.get_token();
    // Called on the main thread, and not after a stop request, which the destructor makes.
    const auto progress = [this, id = model.id](double fraction) { setProgress(id, fraction); };
    co_await download->downloader.download(source(model), localPath(model.id), m_magic, progress, stop);
}

void ModelCatalogManager::setProgress(const QString &id, double fraction)
{
    m_progress[id] = fraction;
    Q_EMIT progressChanged();
}

void ModelCatalogManager::clearProgress(const QString &id)
{
    if (m_progress.remove(id) > 0)
        Q_EMIT progressChanged();
}

void ModelCatalogManager::setLastError(const QString &text)
{
    if (text == m_lastError)
        return;
    m_lastError = text;
    Q_EMIT lastErrorChanged();
}

} // namespace orvane
