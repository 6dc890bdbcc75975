#pragma once

#include "models/ModelCatalog.h"
#include "models/WhisperModel.h"

#include <optional>

namespace orvane {

/// The recognition models in the user's models folder, and which of them to use. Main thread.
class ModelManager : public ModelCatalog<WhisperModel>
{
    Q_OBJECT

public:
    /// The folder need not exist; nothing is downloaded then.
    explicit ModelManager(const QString &modelsDirectory,
                          ModelRepository repository = ModelRepository::ofBuild(), QObject *parent = nullptr)
        : ModelCatalog(modelsDirectory, std::move(repository), parent)
    {}

    [[nodiscard]] QString modelsDirectory() const { return directory(); }

    /// The downloaded model with that id, else the first downloaded one; none when nothing is downloaded.
    [[nodiscard]] std::optional<WhisperModel> resolved(const QString &selectedID) const;

private:
    [[nodiscard]] QString recognised(const QByteArray &beginning) const override
    {
        return WhisperModel::recognised(beginning);
    }
};

} // namespace orvane
