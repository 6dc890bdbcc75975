#pragma once

#include "models/DownloadSession.h"

#include <QHash>
#include <QObject>
#include <QSet>
#include <QUrl>
#include <QVariantMap>

#include <QCoroTask>

#include <memory>
#include <stop_token>

namespace orvane {

/// Where models come from.
struct ModelRepository
{
    /// Scheme and host, such as "https://models.example.org"; empty when the build has none.
    QString address;
    DownloadOptions options;

    [[nodiscard]] static ModelRepository ofBuild();
};

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
/// counts, wherever it came from; its content is not looked at. Main thread.
class ModelCatalogManager : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QSet<QString> downloaded READ downloaded NOTIFY downloadedChanged)
    Q_PROPERTY(QVariantMap progress READ progress NOTIFY progressChanged)
    Q_PROPERTY(QString lastError READ lastError NOTIFY lastErrorChanged)

public:
    /// Interrupts what runs and waits until the records are saved; the next download goes on from them.
    ~ModelCatalogManager() override;

    [[nodiscard]] QString directory() const { return m_directory; }

    /// Ids of the catalogue's models whose file exists.
    [[nodiscard]] QSet<QString> downloaded() const { return m_downloaded; }
    /// The running downloads: id to a fraction 0…1.
    [[nodiscard]] QVariantMap progress() const { return m_progress; }
    /// Why the last failed download did, as a sentence; empty when the last one started has not failed.
    [[nodiscard]] QString lastError() const { return m_lastError; }
    /// Size in bytes of the file that is being downloaded; 0 while it is not known.
    [[nodiscard]] qint64 downloadSize(const QString &id) const;

    /// Where the model's file lies, or would; empty for an id that is not in the catalogue.
    [[nodiscard]] QString localPath(const QString &id) const;

    /// Whether a download of the model runs, here or elsewhere, or was interrupted and can be gone on with.
    [[nodiscard]] bool isPartlyDownloaded(const QString &id) const;

    /// Looks at the folder again.
    Q_INVOKABLE void refresh();

    /// Starts or goes on with a download; nothing when it runs already. A failure becomes lastError.
    Q_INVOKABLE void download(const QString &id);
    /// Ends the download and throws away what it has brought; a model that was complete before stays.
    Q_INVOKABLE void cancelDownload(const QString &id);
    /// Deletes the model's file, and what an interrupted download of it has left.
    Q_INVOKABLE void remove(const QString &id);

    /// The same for callers who wait for the end: throws DownloadError, or Cancelled when stop was
    /// requested (what was downloaded then stays for the next time) or the download was cancelled. The id
    /// is one of the catalogue's.
    [[nodiscard]] QCoro::Task<> fetch(QString id, std::stop_token stop = {});
    [[nodiscard]] QCoro::Task<> deleteFile(QString id);

Q_SIGNALS:
    void downloadedChanged();
    void progressChanged();
    void lastErrorChanged();

protected:
    /// Every file begins with `magic`. The folder need not exist; it is made for the first download.
    ModelCatalogManager(QList<DownloadableModel> models, QByteArray magic, const QString &directory,
                        ModelRepository repository, QObject *parent);

private:
    struct Download;

    [[nodiscard]] const DownloadableModel *find(const QString &id) const;
    [[nodiscard]] QUrl source(const DownloadableModel &model) const;
    [[nodiscard]] QCoro::Task<> publish(QString id);
    [[nodiscard]] QCoro::Task<> transfer(DownloadableModel model, std::shared_ptr<Download> download);
    void setProgress(const QString &id, double fraction);
    void clearProgress(const QString &id);
    void setLastError(const QString &text);

    const QList<DownloadableModel> m_models;
    const QByteArray m_magic;
    const QString m_directory;
    const ModelRepository m_repository;
    QSet<QString> m_downloaded;
    QVariantMap m_progress;
    QString m_lastError;
    QHash<QString, std::shared_ptr<Download>> m_downloads;
    /// Cancelled downloads that were asked for again before they had come to their end.
    QSet<QString> m_again;
    std::stop_source m_lifetime;
};

} // namespace orvane
