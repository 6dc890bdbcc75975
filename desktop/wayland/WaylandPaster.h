#pragma once

#include "desktop/wayland/DataControlClipboard.h"
#include "desktop/wayland/PressedKeys.h"
#include "desktop/wayland/WaylandDisplay.h"

#include <QObject>
#include <QSocketNotifier>

#include <chrono>
#include <memory>

namespace orvane {

/// What a Wayland compositor lets a program do so that a text comes where the user types. Each function may
/// wait for the compositor, up to a second or two; whoever pastes is served between them by the event loop.
/// Lives on a thread of its own. A compositor that went is looked for again by the next offer.
class WaylandPaster : public QObject
{
    Q_OBJECT

public:
    /// Connects, so that it need not be done when there is something to paste.
    void prepare();
    /// Whether the text is on the clipboard.
    [[nodiscard]] bool offer(const QByteArray &text);
    /// Presses Shift+Insert: it pastes in terminals too, and stands at the same place in every layout. False
    /// when this program may not press keys, so that another way is to be tried; never when the compositor
    /// may still press them.
    [[nodiscard]] bool pressPaste();
    /// Who has asked for the text so far does not count as having pasted it.
    void forgetFetches();
    /// Whether some program asks for the text within that time from when the keys were pressed.
    [[nodiscard]] bool isFetched(std::chrono::milliseconds patience);

private:
    [[nodiscard]] bool connectToCompositor();
    void readEvents();
    void disconnectFromCompositor();

    std::unique_ptr<WaylandDisplay> m_display; ///< null while no compositor is there
    std::unique_ptr<DataControlClipboard> m_clipboard;
    std::unique_ptr<PressedKeys> m_keys;
    std::unique_ptr<QSocketNotifier> m_readable;
    int m_fetchesBefore = 0;
};

} // namespace orvane
