#include "models/ModelManager.h"

#include <QFileInfo>

#include <algorithm>

namespace orvane {

ModelManager::ModelManager(const QString &modelsDirectory, QObject *parent)
    : QObject(parent),
      m_modelsDirectory(modelsDirectory)
{
    refresh();
}

QList<WhisperModel> ModelManager::downloadedModels() const
{
    QList<WhisperModel> models;
    std::ranges::copy_if(WhisperModel::catalog(), std::back_inserter(models),
                         [this](const WhisperModel &model) { return m_downloaded.contains(model.id); });
    return models;
}

std::optional<WhisperModel> ModelManager::resolved(const QString &selectedID) const
{
    const QList<WhisperModel> models = downloadedModels();
    if (models.isEmpty())
        return std::nullopt;
    const auto selected = std::ranges::find(models, selectedID, &WhisperModel::id);
    return selected == models.end() ? models.first() : *selected;
}

QString ModelManager::localURL(const WhisperModel &model) const
{
    return m_modelsDirectory + u'/' + model.fileName;
}

void ModelManager::refresh()
{
    QSet<QString> found;
    for (const WhisperModel &model : WhisperModel::catalog()) {
        if (QFileInfo(localURL(model)).isFile())
            found.insert(model.id);
    }
    if (found == m_downloaded)
        return;
    m_downloaded = found;
    Q_EMIT
    downloadedChanged();
}

} // namespace orvane
