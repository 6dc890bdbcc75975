#pragma once

#include "models/CorrectionModel.h"
#include "models/ModelCatalogManager.h"

namespace orvane {

/// The correction models in the user's folder of them. Main thread.
class CorrectionModelManager : public ModelCatalogManager
{
    Q_OBJECT

public:
    /// Makes the folder; when that cannot be, nothing is downloaded.
    explicit CorrectionModelManager(const QString &directory,
                                    ModelRepository repository = ModelRepository::ofBuild(),
                                    QObject *parent = nullptr);

    /// What is downloaded, in catalogue order.
    [[nodiscard]] QList<CorrectionModel> downloadedModels() const;

    using ModelCatalogManager::localURL;
    [[nodiscard]] QString localURL(const CorrectionModel &model) const;
};

} // namespace orvane
