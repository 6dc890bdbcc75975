#include "settings/TriggerName.h"

using namespace Qt::StringLiterals;

namespace orvane {

QString triggerName(const QString &trigger)
{
    return trigger == u"ropt"_s ? u"правый ⌥"_s : u"правый ⌘"_s;
}

} // namespace orvane
