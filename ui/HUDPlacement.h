#pragma once

#include <QList>
#include <QRect>

namespace orvane::HUDPlacement {

/// A screen, and what panels and docks leave of it.
struct Screen
{
    QRect frame;
    QRect available;
};

/// Where the indicator goes: centred near the bottom of the screen that the pointer is on; the first
/// screen when it is on none. At least one screen.
[[nodiscard]] QPoint position(QSize size, QPoint pointer, const QList<Screen> &screens);

} // namespace orvane::HUDPlacement
