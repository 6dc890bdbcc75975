#include "desktop/KeyTap.h"

#include "desktop/DesktopSession.h"
#include "desktop/KeyTap_x11.h"
#include "desktop/wayland/WaylandKeyTap.h"

#include <QGuiApplication>

using namespace Qt::StringLiterals;

namespace orvane {

std::unique_ptr<KeyTap> KeyTap::forDisplay()
{
    if (!qobject_cast<QGuiApplication *>(QCoreApplication::instance()))
        return std::make_unique<KeyTap>();
    // There the X server hears only what is typed into X11 windows.
    if (DesktopSession::ofThisProcess().isWayland())
        return std::make_unique<WaylandKeyTap>();
    if (QGuiApplication::platformName() == "xcb"_L1)
        return std::make_unique<X11KeyTap>();
    return std::make_unique<KeyTap>();
}

} // namespace orvane
