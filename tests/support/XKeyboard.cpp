#include "tests/support/XKeyboard.h"

#include <QProcess>

#include <xcb/xinput.h>
#include <xcb/xtest.h>

using namespace Qt::StringLiterals;

namespace orvane::test {

namespace {

/// The keyboard that the server has as if it were plugged in, not the one for what programs post.
std::uint8_t pluggedInKeyboard(xcb_connection_t *connection)
{
    xcb_input_xi_query_version(connection, 2, 2);
    const XcbOwned<xcb_input_xi_query_device_reply_t> devices(xcb_input_xi_query_device_reply(
        connection, xcb_input_xi_query_device(connection, XCB_INPUT_DEVICE_ALL), nullptr));
    if (!devices)
        return 0;
    for (auto i = xcb_input_xi_query_device_infos_iterator(devices.get()); i.rem > 0;
         xcb_input_xi_device_info_next(&i)) {
        const QByteArrayView name(xcb_input_xi_device_info_name(i.data), i.data->name_len);
        if (i.data->type == XCB_INPUT_DEVICE_TYPE_SLAVE_KEYBOARD && !name.contains("XTEST"))
            return std::uint8_t(i.data->deviceid); // XTest knows no others
    }
    return 0;
}

} // namespace

XKeyboard::XKeyboard(const QString &display)
    : m_connection(XcbConnection::open(display.isEmpty() ? nullptr : display.toLatin1().constData()))
{
    if (m_connection)
        m_keyboard = pluggedInKeyboard(m_connection.get());
    if (m_keyboard == 0)
        qFatal("the display has no keyboard");
    xcb_input_open_device(m_connection.get(), m_keyboard);
}

void XKeyboard::tap(Key key)
{
    press(key);
    release(key);
}

void XKeyboard::tap(Key held, Key key)
{
    press(held);
    tap(key);
    release(held);
}

QList<int> XKeyboard::pressedKeys() const
{
    const XcbOwned<xcb_query_keymap_reply_t> keymap(
        xcb_query_keymap_reply(m_connection.get(), xcb_query_keymap(m_connection.get()), nullptr));
    QList<int> keys;
    for (int key = 0; keymap && key < 256; ++key) {
        if ((keymap->keys[key / 8] >> (key % 8) & 1) != 0)
            keys.append(key);
    }
    return keys;
}

xcb_window_t XKeyboard::focus() const
{
    const XcbOwned<xcb_get_input_focus_reply_t> focus(
        xcb_get_input_focus_reply(m_connection.get(), xcb_get_input_focus(m_connection.get()), nullptr));
    return focus ? focus->focus : xcb_window_t(XCB_NONE);
}

QString XKeyboard::focusedClass() const
{
    // A part of the window may have the focus.
    for (xcb_window_t window = focus(); window > XCB_INPUT_FOCUS_POINTER_ROOT;) {
        const XcbOwned<xcb_get_property_reply_t> property(xcb_get_property_reply(
            m_connection.get(),
            xcb_get_property(m_connection.get(), 0, window, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, 0, 256),
            nullptr));
        if (property && property->value_len > 0)
            return QString::fromLatin1(
                QByteArray(static_cast<const char *>(xcb_get_property_value(property.get())),
                           xcb_get_property_value_length(property.get()))
                    .replace('\0', ' ')
                    .trimmed());
        const XcbOwned<xcb_query_tree_reply_t> tree(
            xcb_query_tree_reply(m_connection.get(), xcb_query_tree(m_connection.get(), window), nullptr));
        window = tree ? tree->parent : xcb_window_t(XCB_NONE);
    }
    return {};
}

void XKeyboard::setLayouts(const QString &layouts, const QString &options)
{
    QProcess::execute(u"setxkbmap"_s, {u"-option"_s, u""_s});
    QProcess::execute(u"setxkbmap"_s, {u"-layout"_s, layouts, u"-option"_s, options});
}

void XKeyboard::send(std::uint8_t what, Key key)
{
    const xcb_query_extension_reply_t *input = xcb_get_extension_data(m_connection.get(), &xcb_input_id);
    const auto type =
        std::uint8_t(input->first_event +
                     (what == XCB_KEY_PRESS ? XCB_INPUT_DEVICE_KEY_PRESS : XCB_INPUT_DEVICE_KEY_RELEASE));
    const XcbOwned<xcb_generic_error_t> error(xcb_request_check(
        m_connection.get(), xcb_test_fake_input_checked(m_connection.get(), type, key, XCB_CURRENT_TIME,
                                                        XCB_NONE, 0, 0, m_keyboard)));
    if (error)
        qFatal("the key cannot be pressed");
}

} // namespace orvane::test
