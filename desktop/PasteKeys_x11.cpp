#include "desktop/PasteKeys.h"

#include "desktop/DesktopSession.h"
#include "desktop/KeyboardMap_x11.h"
#include "desktop/Terminals.h"
#include "desktop/Xcb.h"

#include <QByteArray>
#include <QGuiApplication>

#include <xcb/xtest.h>
#include <xkbcommon/xkbcommon-keysyms.h>
#include <xkbcommon/xkbcommon-x11.h>

#include <algorithm>
#include <chrono>
#include <string_view>
#include <thread>

using namespace Qt::StringLiterals;

namespace orvane::PasteKeys {

namespace {

constexpr std::chrono::seconds patience{1};
constexpr std::chrono::milliseconds pollInterval{10};

/// Both strings of WM_CLASS, each ended by a NUL; empty when the window has none.
QByteArray classOf(const XcbConnection &connection, xcb_window_t window)
{
    const XcbOwned<xcb_get_property_reply_t> property(xcb_get_property_reply(
        connection.get(),
        xcb_get_property(connection.get(), 0, window, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, 0, 256), nullptr));
    if (!property)
        return {};
    const auto *text = static_cast<const char *>(xcb_get_property_value(property.get()));
    return QByteArray(text, xcb_get_property_value_length(property.get()));
}

xcb_window_t parentOf(const XcbConnection &connection, xcb_window_t window)
{
    const XcbOwned<xcb_query_tree_reply_t> tree(
        xcb_query_tree_reply(connection.get(), xcb_query_tree(connection.get(), window), nullptr));
    return tree ? tree->parent : xcb_window_t(XCB_NONE);
}

/// While no window is active, the focus is on one of the window manager's own that nobody sees.
bool noWindowIsActive(const XcbConnection &connection)
{
    constexpr std::string_view name = "_NET_ACTIVE_WINDOW";
    const XcbOwned<xcb_intern_atom_reply_t> atom(xcb_intern_atom_reply(
        connection.get(), xcb_intern_atom(connection.get(), 1, std::uint16_t(name.size()), name.data()),
        nullptr));
    if (!atom)
        return false;
    const XcbOwned<xcb_get_property_reply_t> active(xcb_get_property_reply(
        connection.get(),
        xcb_get_property(connection.get(), 0, connection.root(), atom->atom, XCB_ATOM_WINDOW, 0, 1),
        nullptr));
    return active && xcb_get_property_value_length(active.get()) == sizeof(xcb_window_t) &&
           *static_cast<const xcb_window_t *>(xcb_get_property_value(active.get())) == XCB_WINDOW_NONE;
}

QList<xcb_keycode_t> heldOf(const XcbConnection &connection, const QList<xcb_keycode_t> &keys)
{
    const XcbOwned<xcb_query_keymap_reply_t> pressed(
        xcb_query_keymap_reply(connection.get(), xcb_query_keymap(connection.get()), nullptr));
    QList<xcb_keycode_t> held;
    for (const xcb_keycode_t key : keys) {
        if (pressed && (pressed->keys[key / 8] >> (key % 8) & 1) != 0)
            held.append(key);
    }
    return held;
}

void send(const XcbConnection &connection, std::uint8_t what, xcb_keycode_t key)
{
    xcb_test_fake_input(connection.get(), what, key, XCB_CURRENT_TIME, XCB_NONE, 0, 0, 0);
}

/// False when one is down nevertheless.
bool letGoOfModifiers(const XcbConnection &connection, const KeyboardMap &map)
{
    const QList<xcb_keycode_t> modifiers = map.heldModifierKeys();
    QList<xcb_keycode_t> held = heldOf(connection, modifiers);
    const auto end = std::chrono::steady_clock::now() + patience;
    while (!held.isEmpty() && std::chrono::steady_clock::now() < end) {
        std::this_thread::sleep_for(pollInterval);
        held = heldOf(connection, modifiers);
    }
    for (const xcb_keycode_t key : held)
        send(connection, XCB_KEY_RELEASE, key);
    return held.isEmpty() || heldOf(connection, modifiers).isEmpty();
}

struct Shortcut
{
    xcb_keycode_t modifier;
    xcb_keycode_t key;
};

/// Ctrl+V for applications, Shift+Insert for terminals, and for all when no layout of the keyboard has a
/// Latin V: most applications know it too, and Insert is the same key in every layout.
std::optional<Shortcut> shortcutFor(Receiver receiver, const KeyboardMap &map)
{
    const auto together = [](std::optional<xcb_keycode_t> modifier,
                             std::optional<xcb_keycode_t> key) -> std::optional<Shortcut> {
        if (!modifier || !key)
            return std::nullopt;
        return Shortcut{.modifier = *modifier, .key = *key};
    };
    const std::optional<xcb_keycode_t> v = map.keyInAnyLayout(XKB_KEY_v);
    if (receiver == Receiver::Terminal || !v)
        return together(map.modifierKey(XCB_MAP_INDEX_SHIFT, XKB_KEY_Shift_L),
                        map.keyInAnyLayout(XKB_KEY_Insert));
    return together(map.modifierKey(XCB_MAP_INDEX_CONTROL, XKB_KEY_Control_L), v);
}

} // namespace

bool canBePressed()
{
    // In a Wayland session keys pressed at the X server reach nobody, though it says that they were.
    return QGuiApplication::platformName() == "xcb"_L1 && !DesktopSession::ofThisProcess().isWayland();
}

Receiver receiver(const QStringList &terminalClasses)
{
    const XcbConnection connection = XcbConnection::open();
    if (!connection)
        return Receiver::Nobody;
    const XcbOwned<xcb_get_input_focus_reply_t> focus(
        xcb_get_input_focus_reply(connection.get(), xcb_get_input_focus(connection.get()), nullptr));
    if (!focus || focus->focus == XCB_NONE)
        return Receiver::Nobody;
    // What has the focus may be a part of the window that has a class.
    for (xcb_window_t window = focus->focus; window > XCB_INPUT_FOCUS_POINTER_ROOT;
         window = parentOf(connection, window)) {
        if (const QByteArray windowClass = classOf(connection, window); !windowClass.isEmpty())
            return Terminals::include(windowClass, terminalClasses) ? Receiver::Terminal
                                                                    : Receiver::Application;
    }
    return noWindowIsActive(connection) ? Receiver::Nobody : Receiver::Application;
}

bool press(Receiver receiver)
{
    const XcbConnection connection = XcbConnection::open();
    if (!connection || receiver == Receiver::Nobody)
        return false;
    const xcb_query_extension_reply_t *test = xcb_get_extension_data(connection.get(), &xcb_test_id);
    if (test == nullptr || test->present == 0 ||
        !xkb_x11_setup_xkb_extension(connection.get(), 1, 0, XKB_X11_SETUP_XKB_EXTENSION_NO_FLAGS, nullptr,
                                     nullptr, nullptr, nullptr))
        return false;
    const std::optional<KeyboardMap> map = KeyboardMap::read(connection.get());
    const std::optional<Shortcut> shortcut = map ? shortcutFor(receiver, *map) : std::nullopt;
    if (!shortcut || !letGoOfModifiers(connection, *map))
        return false;
    send(connection, XCB_KEY_PRESS, shortcut->modifier);
    send(connection, XCB_KEY_PRESS, shortcut->key);
    send(connection, XCB_KEY_RELEASE, shortcut->key);
    send(connection, XCB_KEY_RELEASE, shortcut->modifier);
    // The server has done all that when it answers; a connection that ends earlier may take it along.
    (void)heldOf(connection, {});
    return xcb_connection_has_error(connection.get()) == 0;
}

} // namespace orvane::PasteKeys
