#include "desktop/WindowBlending.h"

#include "desktop/Xcb.h"

#include <QByteArray>
#include <QGuiApplication>

namespace orvane {

bool windowsAreBlended()
{
    const auto *x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    if (!x11 || !x11->connection())
        return true; // Wayland compositors always blend, and without a screen nothing is seen
    // A compositing manager owns the selection that is named after its screen.
    xcb_connection_t *connection = x11->connection();
    const QByteArray name = "_NET_WM_CM_S0";
    const XcbOwned<xcb_intern_atom_reply_t> atom(xcb_intern_atom_reply(
        connection, xcb_intern_atom(connection, 0, uint16_t(name.size()), name.constData()), nullptr));
    if (!atom)
        return false;
    const XcbOwned<xcb_get_selection_owner_reply_t> owner(
        xcb_get_selection_owner_reply(connection, xcb_get_selection_owner(connection, atom->atom), nullptr));
    return owner && owner->owner != XCB_NONE;
}

} // namespace orvane
