#include "models/ModelManager.h"

#include <algorithm>

namespace orvane {

std::optional<WhisperModel> ModelManager::resolved(const QString &selectedID) const
{
    const QList<WhisperModel> models = downloadedModels();
    if (models.isEmpty())
        return std::nullopt;
    const auto selected = std::ranges::find(models, selectedID, &WhisperModel::id);
    return selected == models.end() ? models.first() : *selected;
}

} // namespace orvane
