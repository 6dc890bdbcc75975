#pragma once

#include "settings/StoredChoices.h"

/// What the modes of dictation are called, in the interface language.
namespace orvane::DictationModeTexts {

[[nodiscard]] QString title(DictationMode mode);
/// Shown while the language model works.
[[nodiscard]] QString processingStatus(DictationMode mode);
/// One sentence on what becomes of the dictated text.
[[nodiscard]] QString description(DictationMode mode);

} // namespace orvane::DictationModeTexts
