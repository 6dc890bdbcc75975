#pragma once

#include "models/CorrectionModel.h"
#include "models/ModelCatalog.h"

namespace orvane {

/// The correction models in the user's folder of them. Main thread.
class CorrectionModelManager : public ModelCatalog<CorrectionModel>
{
    Q_OBJECT

public:
    /// Makes the folder; when that cannot be, nothing is downloaded.
    explicit CorrectionModelManager(const QString &directory,
                                    ModelRepository repository = ModelRepository::ofBuild(),
                                    QObject *parent = nullptr);
};

} // namespace orvane
