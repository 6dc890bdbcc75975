#pragma once

#include "diagnostics/CheckResult.h"
#include "settings/StoredChoices.h"

#include <QCoroTask>

#include <stop_token>

namespace orvane {

class KeyTap;

/// What the desktop lets the program do. Without a screen it is not found out. Main thread.
namespace DesktopChecks {

/// Whether the keys of dictation are heard: by the application's tap, or by one that is made for this.
[[nodiscard]] QCoro::Task<CheckResult> keys(const KeyTap *installed, TriggerKey trigger,
                                            std::stop_token stop);

/// How a text comes to where the user types.
[[nodiscard]] CheckResult paste();

/// How a key is bound to a command on a desktop of that kind, as XDG_CURRENT_DESKTOP names it.
[[nodiscard]] QString keyAdvice(const QString &desktop);

} // namespace DesktopChecks

} // namespace orvane
