#include "settings/TriggerName.h"

namespace orvane {

Localization::Text triggerName(TriggerKey key)
{
    return key == TriggerKey::RightOption ? Localization::Text(u"правый ⌥") : Localization::Text(u"правый ⌘");
}

} // namespace orvane
