#include "desktop/PasteAccess.h"

#include "desktop/DesktopSession.h"
#include "desktop/PasteKeys.h"
#include "desktop/wayland/RemoteDesktopPaste.h"

namespace orvane::PasteAccess {

State state()
{
    const DesktopSession &session = DesktopSession::ofThisProcess();
    if (!session.isWayland())
        return PasteKeys::canBePressed() ? State::Granted : State::None;
    const bool mayPress =
        session.offers("zwp_virtual_keyboard_manager_v1") || session.offers("org_kde_kwin_fake_input", 4);
    // Without the clipboard, only the portal's keys are pressed.
    return (mayPress && session.offersClipboard()) || RemoteDesktopPaste::isAllowed() ? State::Granted
                                                                                      : State::ToBeAsked;
}

QCoro::Task<> ask()
{
    return RemoteDesktopPaste::askConsent();
}

} // namespace orvane::PasteAccess
