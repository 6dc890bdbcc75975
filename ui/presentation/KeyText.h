#pragma once

#include <QString>

namespace orvane {

class AppSettings;
class KeyTap;

/// How to start a dictation with the keyboard here, or what keeps it from being heard and what to do then.
[[nodiscard]] QString keyText(const AppSettings &settings, const KeyTap &keys);

} // namespace orvane
