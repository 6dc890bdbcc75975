#pragma once

#include "base/Scope.h"
#include "base/files/FileStamp.h"
#include "base/files/FolderWatch.h"
#include "models/DownloadProgress.h"
#include "models/ModelRepository.h"

#include <QHash>
#include <QMap>
#include <QObject>
#include <QSet>
#include <QVariantMap>

#include <QCoroTask>

#include <memory>
#include <stop_token>

namespace orvane {

/// A model of a catalogue, as far as files are concerned.
struct DownloadableModel
{
    QString id;
    QString displayName;
    QString fileName;
    /// The file's path in the repository, beginning with a slash.
    QString repositoryPath;
};

/// Knows which models of a catalogue lie in a folder, downloads and deletes them. A file of the right name
/// counts, wherever it came from; its content is not looked at. What other programs change is noticed. Main
/// thread.
class ModelCatalogManager : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QSet<QString> downloaded READ downloaded NOTIFY downloadedChanged)
    Q_PROPERTY(QSet<QString> partlyDownloaded READ partlyDownloaded NOTIFY partlyDownloadedChanged)
    Q_PROPERTY(QVariantMap progress READ progress NOTIFY progressChanged)
    Q_PROPERTY(QString lastError READ lastError NOTIFY lastErrorChanged)

public:
    /// Interrupts what runs and waits until the records are saved; the next download resumes from them.
    ~ModelCatalogManager() override;

    [[nodiscard]] QString directory() const { return m_directory; }

    /// Where the next downloads come from; empty while nothing says where.
    [[nodiscard]] QString repository() const { return m_repository.address; }
    void setRepository(const QString &address);

    /// Ids of the catalogue's models whose file exists.
    [[nodiscard]] QSet<QString> downloaded() const { return m_downloaded; }
    /// Ids of the models of which a download runs, here or elsewhere, or was interrupted and can be resumed.
    [[nodiscard]] QSet<QString> partlyDownloaded() const { return m_partlyDownloaded; }
    /// The running downloads: id to a fraction 0…1.
    [[nodiscard]] QVariantMap progress() const;
    /// The same in full, for one of them; nothing is reached of what does not run.
    [[nodiscard]] Q_INVOKABLE DownloadProgress downloadProgress(const QString &id) const
    {
        return m_progress.value(id);
    }
    /// Why the last failed download did, as a sentence; empty when the last one started has not failed.
    [[nodiscard]] QString lastError() const { return m_lastError; }

    /// Empty for an id that is not in the catalogue.
    [[nodiscard]] QString displayName(const QString &id) const;
    /// Where the model's file lies, or would; empty for an id that is not in the catalogue.
    [[nodiscard]] QString localPath(const QString &id) const;

    /// Looks at the folder now. It is also looked at a moment after it has changed.
    Q_INVOKABLE void refresh();

    /// Starts or resumes a download; nothing when it runs already. A failure becomes lastError.
    Q_INVOKABLE void download(const QString &id);
    /// Ends the download and throws away what it has brought, also when it was interrupted before; a model
    /// that was complete before stays.
    Q_INVOKABLE void cancelDownload(const QString &id);
    /// Starts to copy a model's file from another folder; its name or its content tells which model it is.
    /// cancelDownload() ends that too. A failure becomes lastError.
    Q_INVOKABLE void importFile(const QString &path);
    /// Deletes the model's file, and what an interrupted download of it has left.
    Q_INVOKABLE void remove(const QString &id);

    /// The same for callers who wait for the end: throws DownloadError, or Cancelled when stop was
    /// requested (what was downloaded then stays for the next time) or the download was cancelled. The id
    /// is one of the catalogue's.
    [[nodiscard]] QCoro::Task<> fetch(QString id, std::stop_token stop = {});
    [[nodiscard]] QCoro::Task<> deleteFile(QString id);
    /// Ends with the model's id. Throws FileError, DownloadError or Cancelled.
    [[nodiscard]] QCoro::Task<QString> import(QString path);

Q_SIGNALS:
    void repositoryChanged();
    void downloadedChanged();
    void partlyDownloadedChanged();
    void progressChanged();
    void lastErrorChanged();
    /// The model's file is another than when it was last seen.
    void fileReplaced(const QString &id);

protected:
    /// Every file begins with `magic`. The folder need not exist; it is made for the first download.
    ModelCatalogManager(QList<DownloadableModel> models, QByteArray magic, const QString &directory,
                        ModelRepository repository, QObject *parent);

    /// The id of the model whose file begins so; empty when the beginning does not tell.
    [[nodiscard]] virtual QString recognised(const QByteArray &beginning) const;

private:
    struct Download;

    [[nodiscard]] const DownloadableModel *find(const QString &id) const;
    [[nodiscard]] QString modelIn(const QString &path, const QByteArray &beginning) const;
    [[nodiscard]] QCoro::Task<> publish(QString id);
    [[nodiscard]] QCoro::Task<> publishImport(QString path);
    [[nodiscard]] QCoro::Task<> discardPart(QString id);
    /// From that file, or, without one, from the repository.
    [[nodiscard]] QCoro::Task<> bring(QString id, QString file, std::stop_token stop);
    [[nodiscard]] QCoro::Task<> transfer(QString id, QString file, std::stop_token stop,
                                         std::stop_token discard);
    void setProgress(const QString &id, const DownloadProgress &progress);
    void clearProgress(const QString &id);
    void setLastError(const QString &text);

    const QList<DownloadableModel> m_models;
    const QByteArray m_magic;
    const QString m_directory;
    ModelRepository m_repository;
    QSet<QString> m_downloaded;
    QSet<QString> m_partlyDownloaded;
    /// Of every file seen so far, also of those that have gone.
    QHash<QString, FileStamp> m_stamps;
    /// Models whose file is about to go.
    QSet<QString> m_deleting;
    FolderWatch m_watch;
    QMap<QString, DownloadProgress> m_progress;
    QString m_lastError;
    QHash<QString, std::shared_ptr<Download>> m_downloads;
    /// Cancelled downloads that were asked for again before they had come to their end.
    QSet<QString> m_again;
    Scope m_scope;
};

} // namespace orvane
