#include "settings/TriggerName.h"

namespace orvane {

Localization::Text triggerName(TriggerKey key)
{
    return key == TriggerKey::RightOption ? Localization::Text(u"правый Alt")
                                          : Localization::Text(u"правый Ctrl");
}

} // namespace orvane
