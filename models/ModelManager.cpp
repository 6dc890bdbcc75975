#include "models/ModelManager.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

QList<DownloadableModel> downloadable()
{
    QList<DownloadableModel> models;
    for (const WhisperModel &model : WhisperModel::catalog()) {
        models.append({.id = model.id,
                       .displayName = model.displayName,
                       .fileName = model.fileName,
                       .repositoryPath = u"/vantrel/whisper.cpp/resolve/main/"_s + model.fileName});
    }
    return models;
}

/// The ggml form's magic number, little-endian.
QByteArray magic()
{
    return "lmgg";
}

} // namespace

ModelManager::ModelManager(const QString &modelsDirectory, ModelRepository repository, QObject *parent)
    : ModelCatalogManager(downloadable(), magic(), modelsDirectory, std::move(repository), parent)
{}

QList<WhisperModel> ModelManager::downloadedModels() const
{
    QList<WhisperModel> models;
    const QSet<QString> ids = downloaded();
    std::ranges::copy_if(WhisperModel::catalog(), std::back_inserter(models),
                         [&ids](const WhisperModel &model) { return ids.contains(model.id); });
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
    return modelsDirectory() + u'/' + model.fileName;
}

} // namespace orvane
