#include "desktop/KeyGrab_x11.h"

namespace orvane {

void KeyGrab::take(const XcbConnection &connection, const KeyboardMap &map)
{
    m_isRefused = false;
    m_isDown = false;
    m_firstRequest = 0;
    m_lastRequest = 0;
    for (const xcb_keycode_t key : map.keysWith(m_symbol)) {
        for (const std::uint16_t locks : map.lockCombinations()) {
            const xcb_void_cookie_t request = xcb_grab_key(connection.get(), false, connection.root(), locks,
                                                           key, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
            if (m_firstRequest == 0)
                m_firstRequest = request.sequence;
            m_lastRequest = request.sequence;
        }
    }
}

void KeyGrab::release(const XcbConnection &connection, const KeyboardMap &map)
{
    for (const xcb_keycode_t key : map.keysWith(m_symbol)) {
        for (const std::uint16_t locks : map.lockCombinations())
            xcb_ungrab_key(connection.get(), key, connection.root(), locks);
    }
    m_firstRequest = 0; // whatever became of them
    m_lastRequest = 0;
    m_isRefused = false;
    m_isMissing = false;
}

void KeyGrab::reset()
{
    *this = KeyGrab(m_symbol);
}

void KeyGrab::handleError(const xcb_generic_error_t &error)
{
    if (error.major_code == XCB_GRAB_KEY && error.full_sequence >= m_firstRequest &&
        error.full_sequence <= m_lastRequest)
        m_isRefused = true;
}

bool KeyGrab::handleKey(const xcb_key_press_event_t &event, const KeyboardMap &map)
{
    if (map.symbol(event.detail) != m_symbol)
        return false;
    const bool wasDown = m_isDown;
    m_isDown = (event.response_type & 0x7f) == XCB_KEY_PRESS;
    return m_isDown && !wasDown;
}

} // namespace orvane
