#include "models/ModelCatalogManager.h"

#include "base/AnyStop.h"
#include "base/Async.h"
#include "base/localization/Localization.h"
#include "models/ModelDownloader.h"
#include "models/ModelImport.h"
#include "models/PartFile.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace orvane {

using Localization::text;

struct ModelCatalogManager::Download
{
    explicit Download(DownloadOptions options) : downloader(options) {}

    ModelDownloader downloader;
    /// Stopped when the user cancels: nothing of it is kept.
    std::stop_source discard;
};

ModelCatalogManager::ModelCatalogManager(QList<DownloadableModel> models, QByteArray magic,
                                         const QString &directory, ModelRepository repository,
                                         QObject *parent)
    : QObject(parent),
      m_models(std::move(models)),
      m_magic(std::move(magic)),
      m_directory(directory),
      m_repository(std::move(repository)),
      m_watch(directory)
{
    connect(&m_watch, &FolderWatch::changed, this, &ModelCatalogManager::refresh);
    refresh();
}

ModelCatalogManager::~ModelCatalogManager()
{
    m_scope.end();
    for (const auto &download : std::as_const(m_downloads))
        download->downloader.interruptAndWait();
}

QVariantMap ModelCatalogManager::progress() const
{
    QVariantMap fractions;
    for (const auto &[id, progress] : m_progress.asKeyValueRange())
        fractions.insert(id, progress.fraction());
    return fractions;
}

const DownloadableModel *ModelCatalogManager::find(const QString &id) const
{
    const auto found = std::ranges::find(m_models, id, &DownloadableModel::id);
    return found == m_models.end() ? nullptr : &*found;
}

QString ModelCatalogManager::displayName(const QString &id) const
{
    const DownloadableModel *model = find(id);
    return model ? model->displayName : QString();
}

QString ModelCatalogManager::localPath(const QString &id) const
{
    const DownloadableModel *model = find(id);
    return model ? m_directory + u'/' + model->fileName : QString();
}

void ModelCatalogManager::setRepository(const QString &address)
{
    if (std::exchange(m_repository.address, address) != address)
        Q_EMIT repositoryChanged();
}

void ModelCatalogManager::refresh()
{
    QSet<QString> downloaded;
    QSet<QString> partlyDownloaded;
    QStringList files;
    QStringList replaced;
    for (const DownloadableModel &model : m_models) {
        const QString file = localPath(model.id);
        if (QFileInfo::exists(PartFile::pathFor(file)))
            partlyDownloaded.insert(model.id);
        const auto stamp = FileStamp::of(QFile::encodeName(file));
        if (!stamp || m_deleting.contains(model.id))
            continue;
        downloaded.insert(model.id);
        files.append(file);
        if (m_stamps.value(model.id, *stamp) != *stamp)
            replaced.append(model.id);
        m_stamps.insert(model.id, *stamp);
    }
    m_watch.setFiles(files);
    if (std::exchange(m_downloaded, downloaded) != downloaded)
        Q_EMIT downloadedChanged();
    if (std::exchange(m_partlyDownloaded, partlyDownloaded) != partlyDownloaded)
        Q_EMIT partlyDownloadedChanged();
    for (const QString &id : replaced)
        Q_EMIT fileReplaced(id);
}

void ModelCatalogManager::download(const QString &id)
{
    if (!find(id))
        return;
    const auto running = m_downloads.value(id);
    if (!running) {
        spawn(publish(id));
    } else if (running->discard.stop_requested()) {
        m_again.insert(id);
        setProgress(id, {});
    }
}

void ModelCatalogManager::cancelDownload(const QString &id)
{
    if (!find(id))
        return;
    m_again.remove(id);
    clearProgress(id);
    if (const auto running = m_downloads.value(id))
        running->discard.request_stop();
    else
        spawn(discardPart(id));
}

QCoro::Task<> ModelCatalogManager::discardPart(QString id)
{
    const auto work = [file = localPath(id)] { PartFile::discard(file); };
    co_await m_scope(offMainThread(work));
    refresh();
}

void ModelCatalogManager::remove(const QString &id)
{
    spawn(deleteFile(id));
}

QCoro::Task<> ModelCatalogManager::deleteFile(QString id)
{
    const QString file = localPath(id);
    if (file.isEmpty())
        co_return;
    m_deleting.insert(id);
    refresh(); // before the file goes, so that nobody begins to use it
    // Freeing gigabytes takes a disk its time.
    const auto work = [file] {
        QFile::remove(file);
        PartFile::discard(file);
    };
    co_await m_scope(offMainThread(work));
    m_deleting.remove(id);
    refresh();
}

QCoro::Task<> ModelCatalogManager::publish(QString id)
{
    setLastError({});
    QString failure;
    try {
        co_await m_scope(fetch(id));
    } catch (const Gone &) {
        throw;
    } catch (const Cancelled &) {
        // The user knows.
    } catch (const std::exception &error) {
        failure = descriptionOf(error);
    }
    if (!failure.isEmpty())
        setLastError(text(u"Не удалось скачать ") + find(id)->displayName + u": "_s + failure);
}

void ModelCatalogManager::importFile(const QString &path)
{
    spawn(publishImport(path));
}

QCoro::Task<> ModelCatalogManager::publishImport(QString path)
{
    setLastError({});
    QString failure;
    try {
        co_await m_scope(import(path));
    } catch (const Gone &) {
        throw;
    } catch (const std::exception &error) {
        failure = descriptionOf(error); // none when the user has cancelled it
    }
    if (!failure.isEmpty())
        setLastError(failure);
}

QCoro::Task<QString> ModelCatalogManager::import(QString path)
{
    const auto read = [path] { return ModelImport::beginningOf(path); };
    const QByteArray beginning = co_await m_scope(offMainThread(read));
    const QString id = modelIn(path, beginning);
    if (QFileInfo(path).canonicalFilePath() != QFileInfo(localPath(id)).canonicalFilePath())
        co_await m_scope(bring(id, path, {}));
    co_return id;
}

QString ModelCatalogManager::modelIn(const QString &path, const QByteArray &beginning) const
{
    const QString name = QFileInfo(path).fileName();
    if (!beginning.startsWith(m_magic))
        throw DownloadError::notAModel(name);
    for (const DownloadableModel &model : m_models) {
        if (name.compare(model.fileName, Qt::CaseInsensitive) == 0)
            return model.id;
    }
    const QString id = recognised(beginning);
    if (id.isEmpty())
        throw DownloadError::unknownModel(name, m_models.constFirst().fileName);
    return id;
}

QString ModelCatalogManager::recognised(const QByteArray &) const
{
    return {};
}

QCoro::Task<> ModelCatalogManager::fetch(QString id, std::stop_token stop)
{
    return bring(id, {}, stop);
}

QCoro::Task<> ModelCatalogManager::bring(QString id, QString file, std::stop_token stop)
{
    if (m_downloads.contains(id))
        throw DownloadError::alreadyRunning();
    const auto download = std::make_shared<Download>(m_repository.options);
    m_downloads.insert(id, download);
    setProgress(id, {});

    const AnyStop any(stop, m_scope.stop());
    std::exception_ptr failure;
    try {
        co_await m_scope(transfer(id, file, any.token(), download->discard.get_token()));
    } catch (const Gone &) {
        throw;
    } catch (...) {
        failure = std::current_exception();
    }
    m_downloads.remove(id);
    const bool isWantedAgain = m_again.remove(id) && failure; // a late cancel finds the file complete
    if (!isWantedAgain)
        clearProgress(id);
    refresh();
    if (isWantedAgain)
        spawn(publish(id));
    if (failure && download->discard.stop_requested())
        throw Cancelled();
    if (failure)
        std::rethrow_exception(failure);
}

QCoro::Task<> ModelCatalogManager::transfer(QString id, QString file, std::stop_token stop,
                                            std::stop_token discard)
{
    const DownloadableModel &model = *find(id);
    // Called on the main thread, and not after a stop request, which the destructor makes.
    const auto progress = [this, id](const DownloadProgress &reached) { setProgress(id, reached); };
    ModelDownloader &downloader = m_downloads.value(id)->downloader;
    if (!file.isEmpty())
        return downloader.copy(file, localPath(id), progress, stop, discard);
    return downloader.download(m_repository.urlOf(model.repositoryPath), localPath(id), m_magic, progress,
                               stop, discard);
}

void ModelCatalogManager::setProgress(const QString &id, const DownloadProgress &progress)
{
    m_progress[id] = progress;
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
