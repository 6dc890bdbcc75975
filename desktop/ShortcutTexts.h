#pragma once

#include "desktop/Shortcuts.h"

#include <QString>

/// What the user reads of the keys that the desktop gives.
namespace orvane::ShortcutTexts {

/// Such as "right Ctrl twice or Ctrl+Alt+Space"; empty when nothing is in force.
[[nodiscard]] QString keys(const Shortcuts &shortcuts);
/// The same, and who gives them.
[[nodiscard]] QString keysAndGiver(const Shortcuts &shortcuts);
/// Where others can be chosen, a sentence.
[[nodiscard]] QString howToChange(Shortcuts::Giver giver);

} // namespace orvane::ShortcutTexts
