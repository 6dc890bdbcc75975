#pragma once

#include "desktop/Xcb.h"

#include <QByteArray>

namespace orvane {

/// Sees from outside what programs put on the display of the environment. Polled: each question looks at what
/// has happened since the one before.
class ScreenWatch
{
public:
    ScreenWatch();

    /// Keeps what the screen shows now, and forgets what has happened.
    void begin();
    /// Whether a tray has taken an icon in since then.
    [[nodiscard]] bool hasDockedIcon();
    /// Whether since then a window has come up that no window manager sees, and something in it is painted.
    [[nodiscard]] bool showsOverlay();

    /// Whether there is a tray to dock in.
    [[nodiscard]] bool hasTray() const;

private:
    void readEvents();
    [[nodiscard]] QByteArray picture(int x, int y, int width, int height) const;

    const XcbConnection m_connection;
    QByteArray m_before;
    int m_width = 0;
    int m_height = 0;
    xcb_window_t m_overlay = XCB_NONE;
    bool m_hasDocked = false;
};

} // namespace orvane
