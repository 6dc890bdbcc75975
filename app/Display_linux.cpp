#include "app/Display.h"

#include "dictation/Xcb.h"

#include <QtGlobal>

namespace orvane {

bool hasDisplay()
{
    if (!qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY") || qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        return true;
    // Qt ends the program when nobody answers there.
    return !qEnvironmentVariableIsEmpty("DISPLAY") && XcbConnection::open();
}

} // namespace orvane
