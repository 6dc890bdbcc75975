#pragma once

#include <QString>

namespace orvane {

/// What the name of an installable package ends with here, without the dot.
[[nodiscard]] QString packageSuffix();

} // namespace orvane
