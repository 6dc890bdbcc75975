#pragma once

#include <xcb/xcb.h>

#include <cstdlib>
#include <memory>

namespace orvane {

/// Frees what XCB hands out: replies, events, errors.
struct XcbFree
{
    void operator()(void *memory) const { std::free(memory); }
};
template <typename Type>
using XcbOwned = std::unique_ptr<Type, XcbFree>;

struct XcbDisconnect
{
    void operator()(xcb_connection_t *connection) const { xcb_disconnect(connection); }
};

/// A connection to the display that is nobody else's, so that whatever goes wrong on it is not fatal to the
/// program as it would be on the toolkit's. The calls that wait for an answer belong on other threads.
class XcbConnection
{
public:
    /// No connection.
    XcbConnection() = default;

    /// Connects to the display of that name, else to the one in the environment. Waits for the server; no
    /// connection when there is none.
    [[nodiscard]] static XcbConnection open(const char *display = nullptr)
    {
        XcbConnection made;
        int screen = 0;
        made.m_connection.reset(xcb_connect(display, &screen));
        if (xcb_connection_has_error(made.get()) != 0) {
            made.m_connection.reset();
            return made;
        }
        xcb_screen_iterator_t screens = xcb_setup_roots_iterator(xcb_get_setup(made.get()));
        while (screen-- > 0)
            xcb_screen_next(&screens);
        made.m_root = screens.data->root;
        return made;
    }

    [[nodiscard]] explicit operator bool() const { return m_connection != nullptr; }
    [[nodiscard]] xcb_connection_t *get() const { return m_connection.get(); }
    [[nodiscard]] xcb_window_t root() const { return m_root; }

private:
    std::unique_ptr<xcb_connection_t, XcbDisconnect> m_connection;
    xcb_window_t m_root = XCB_NONE;
};

} // namespace orvane
