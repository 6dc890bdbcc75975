#pragma once

#include "desktop/Xcb.h"

#include <QList>
#include <QString>

namespace orvane::test {

/// The keys of an X11 display's keyboard, pressed as if by hand. Keys are named by their places on a PC
/// keyboard with the "us" layout.
class XKeyboard
{
public:
    enum Key : xcb_keycode_t {
        Escape = 9,
        Return = 36,
        LeftCtrl = 37,
        A = 38,
        S = 39,
        LeftShift = 50,
        CapsLock = 66,
        F5 = 71,
        F6 = 72,
        NumLock = 77,
        ScrollLock = 78,
        RightCtrl = 105,
        RightAlt = 108,
        RightSuper = 134
    };

    /// The display of the environment when no name is given.
    explicit XKeyboard(const QString &display = {});

    void press(Key key) { send(XCB_KEY_PRESS, key); }
    void release(Key key) { send(XCB_KEY_RELEASE, key); }
    void tap(Key key);
    /// Taps a key while another is held.
    void tap(Key held, Key key);

    /// Every key that the server takes for pressed.
    [[nodiscard]] QList<int> pressedKeys() const;
    /// The window that has the focus.
    [[nodiscard]] xcb_window_t focus() const;
    /// Both strings of its class, such as "xterm XTerm"; empty when it has none.
    [[nodiscard]] QString focusedClass() const;

    /// Such as {"us,ru", "grp:sclk_toggle"}, from the first layout on, with no lock on.
    static void setLayouts(const QString &layouts, const QString &options = {});

private:
    void send(std::uint8_t what, Key key);

    XcbConnection m_connection;
    std::uint8_t m_keyboard = 0;
};

} // namespace orvane::test
