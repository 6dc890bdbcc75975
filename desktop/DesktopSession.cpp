#include "desktop/DesktopSession.h"

#include "desktop/wayland/WaylandDisplay.h"

namespace orvane {

const DesktopSession &DesktopSession::ofThisProcess()
{
    static const DesktopSession session = ask();
    return session;
}

DesktopSession DesktopSession::ask()
{
    DesktopSession session;
    if (const std::unique_ptr<WaylandDisplay> display = WaylandDisplay::open()) {
        session.m_isWayland = true;
        session.m_versions = display->versions();
    }
    return session;
}

} // namespace orvane
