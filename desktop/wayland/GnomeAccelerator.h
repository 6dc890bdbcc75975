#pragma once

#include "settings/StoredChoices.h"

#include <QString>

/// How GNOME writes keys, such as "<Control><Alt>space" and "Control_R".
namespace orvane::GnomeAccelerator {

/// Of the trigger alone.
[[nodiscard]] QString acceleratorOf(TriggerKey trigger);

/// The same for every order and every name of the modifiers.
[[nodiscard]] QString normalised(const QString &accelerator);

/// As the user calls it, such as "Ctrl+Alt+Space".
[[nodiscard]] QString nameOf(const QString &accelerator);

/// The same of a sentence that ends with one; any other text as it is.
[[nodiscard]] QString nameIn(const QString &description);

} // namespace orvane::GnomeAccelerator
