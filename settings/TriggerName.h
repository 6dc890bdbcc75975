#pragma once

#include "base/localization/Localization.h"
#include "settings/StoredChoices.h"

namespace orvane {

/// The key as this platform's keyboards call it.
[[nodiscard]] Localization::Text triggerName(TriggerKey key);

} // namespace orvane
