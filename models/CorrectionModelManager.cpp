#include "models/CorrectionModelManager.h"

#include <QDir>

#include <algorithm>

namespace orvane {

namespace {

QList<DownloadableModel> downloadable()
{
    QList<DownloadableModel> models;
    for (const CorrectionModel &model : CorrectionModel::catalog()) {
        models.append({.id = model.id,
                       .displayName = model.displayName,
                       .fileName = model.fileName,
                       .repositoryPath = model.repositoryPath});
    }
    return models;
}

/// What every GGUF file begins with.
QByteArray magic()
{
    return "GGUF";
}

QString made(const QString &folder)
{
    QDir().mkpath(folder);
    return folder;
}

} // namespace

CorrectionModelManager::CorrectionModelManager(const QString &directory, ModelRepository repository,
                                               QObject *parent)
    : ModelCatalogManager(downloadable(), magic(), made(directory), std::move(repository), parent)
{}

QList<CorrectionModel> CorrectionModelManager::downloadedModels() const
{
    QList<CorrectionModel> models;
    const QSet<QString> ids = downloaded();
    std::ranges::copy_if(CorrectionModel::catalog(), std::back_inserter(models),
                         [&ids](const CorrectionModel &model) { return ids.contains(model.id); });
    return models;
}

QString CorrectionModelManager::localURL(const CorrectionModel &model) const
{
    return directory() + u'/' + model.fileName;
}

} // namespace orvane
