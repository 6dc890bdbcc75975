#include "ui/HUDPlacement.h"

#include <algorithm>

namespace orvane::HUDPlacement {

namespace {

constexpr int distanceFromBottom = 80; // pixels

} // namespace

QPoint position(QSize size, QPoint pointer, const QList<Screen> &screens)
{
    const auto under = std::ranges::find_if(
        screens, [pointer](const Screen &screen) { return screen.frame.contains(pointer); });
    const QRect available = (under == screens.end() ? screens.first() : *under).available;
    return {available.x() + (available.width() - size.width()) / 2,
            available.y() + available.height() - distanceFromBottom - size.height()};
}

} // namespace orvane::HUDPlacement
