#include "settings/TriggerName.h"

using namespace Qt::StringLiterals;

namespace orvane {

Localization::Text triggerName(const QString &trigger)
{
    return trigger == "ropt"_L1 ? Localization::Text(u"правый ⌥") : Localization::Text(u"правый ⌘");
}

} // namespace orvane
