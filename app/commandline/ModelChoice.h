#pragma once

#include "models/ModelFile.h"

#include <QString>

namespace orvane {

class AppServices;

/// The models that --model names: by the id of a downloaded model of the catalogue or the path of a file.
namespace ModelChoice {

/// The user's choice for an empty name. Throws Error when there is no such model.
[[nodiscard]] ModelFile recognitionModel(AppServices &services, const QString &name);

/// Path of the file; empty for an empty name. Throws Error when there is no such model.
[[nodiscard]] QString languageModelPath(AppServices &services, const QString &name);

} // namespace ModelChoice

} // namespace orvane
