#pragma once

#include "models/WhisperModel.h"

#include <QObject>
#include <QSet>

#include <optional>

namespace orvane {

/// Knows which recognition models of the catalogue lie in the user's models folder, and picks the one
/// to use. Main thread.
class ModelManager : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QSet<QString> downloaded READ downloaded NOTIFY downloadedChanged)

public:
    /// The folder need not exist; nothing is downloaded then.
    explicit ModelManager(const QString &modelsDirectory, QObject *parent = nullptr);

    [[nodiscard]] QString modelsDirectory() const { return m_modelsDirectory; }

    /// Ids of the catalogue's models whose file exists.
    [[nodiscard]] QSet<QString> downloaded() const { return m_downloaded; }
    /// The same as models, in catalogue order.
    [[nodiscard]] QList<WhisperModel> downloadedModels() const;

    /// The downloaded model with that id, else the first downloaded one; none when nothing is downloaded.
    [[nodiscard]] std::optional<WhisperModel> resolved(const QString &selectedID) const;

    /// Where the model's file lies, or would.
    [[nodiscard]] QString localURL(const WhisperModel &model) const;

    /// Looks at the folder again.
    void refresh();

Q_SIGNALS:
    void downloadedChanged();

private:
    const QString m_modelsDirectory;
    QSet<QString> m_downloaded;
};

} // namespace orvane
