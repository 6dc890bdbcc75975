#pragma once

#include <QString>

namespace orvane {

/// The platform of Qt's that can show windows here, as its option -platform takes it: of those that the
/// environment asks for, else of Qt's own order. Empty when none can.
[[nodiscard]] QString displayPlatform();

} // namespace orvane
