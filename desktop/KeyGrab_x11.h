#pragma once

#include "desktop/KeyboardMap_x11.h"
#include "desktop/Xcb.h"

namespace orvane {

/// One key that, pressed alone, comes to us instead of to the focused application, whatever locks are on.
/// Sends requests and waits for none: what the server says of them is passed in.
class KeyGrab
{
public:
    explicit KeyGrab(xkb_keysym_t symbol) : m_symbol(symbol) {}

    /// Asks for every key that has the symbol.
    void take(const XcbConnection &connection, const KeyboardMap &map);
    /// Gives back what was asked for by this map.
    void release(const XcbConnection &connection, const KeyboardMap &map);
    /// Forgets the server: the connection is gone.
    void reset();

    void handleError(const xcb_generic_error_t &error);
    /// Every error of the last take() has been handled.
    void settle() { m_isMissing = m_isRefused; }
    /// Whether another program holds the key, or a combination of it with locks, as settled last.
    [[nodiscard]] bool isMissing() const { return m_isMissing; }

    /// A press or a release of a grabbed key; true when it is this one that begins to be pressed.
    [[nodiscard]] bool handleKey(const xcb_key_press_event_t &event, const KeyboardMap &map);

private:
    xkb_keysym_t m_symbol;
    unsigned m_firstRequest = 0;
    unsigned m_lastRequest = 0;
    bool m_isRefused = false;
    bool m_isMissing = false;
    bool m_isDown = false;
};

} // namespace orvane
