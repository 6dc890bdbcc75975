#pragma once

#include <QString>

namespace orvane {

/// The dictation key of a stored trigger ("rcmd", "ropt") as this platform's keyboards call it, in
/// Russian; any other trigger is named like "rcmd".
[[nodiscard]] QString triggerName(const QString &trigger);

} // namespace orvane
