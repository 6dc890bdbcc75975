#pragma once

#include "base/localization/Localization.h"

#include <QString>

namespace orvane {

/// The dictation key of a stored trigger ("rcmd", "ropt") as this platform's keyboards call it;
/// any other trigger is named like "rcmd".
[[nodiscard]] Localization::Text triggerName(const QString &trigger);

} // namespace orvane
