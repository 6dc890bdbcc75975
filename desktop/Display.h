#pragma once

#include <QString>

namespace orvane {

/// The platform of Qt's that can show windows here, as its option -platform takes it: of those that the
/// environment asks for, else the one on which everything is as it should be. Empty when none can.
[[nodiscard]] QString displayPlatform();

} // namespace orvane
