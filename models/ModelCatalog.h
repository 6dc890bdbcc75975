#pragma once

#include "models/ModelCatalogManager.h"

#include <algorithm>
#include <iterator>

namespace orvane {

/// ModelCatalogManager in terms of one kind of model: WhisperModel or CorrectionModel.
template <typename Model>
class ModelCatalog : public ModelCatalogManager
{
public:
    /// What is downloaded, in catalogue order.
    [[nodiscard]] QList<Model> downloadedModels() const
    {
        QList<Model> models;
        const QSet<QString> ids = downloaded();
        std::ranges::copy_if(Model::catalog(), std::back_inserter(models),
                             [&ids](const Model &model) { return ids.contains(model.id); });
        return models;
    }

    using ModelCatalogManager::localPath;
    [[nodiscard]] QString localPath(const Model &model) const { return localPath(model.id); }

protected:
    ModelCatalog(const QString &directory, ModelRepository repository, QObject *parent)
        : ModelCatalogManager(downloadable(), Model::magic(), directory, std::move(repository), parent)
    {}

private:
    [[nodiscard]] static QList<DownloadableModel> downloadable()
    {
        QList<DownloadableModel> models;
        for (const Model &model : Model::catalog()) {
            models.append({.id = model.id,
                           .displayName = model.displayName,
                           .fileName = model.fileName,
                           .repositoryPath = model.repositoryPath()});
        }
        return models;
    }
};

} // namespace orvane
