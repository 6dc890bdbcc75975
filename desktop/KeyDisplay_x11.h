#pragma once

#include "desktop/KeyboardMap_x11.h"
#include "desktop/Xcb.h"

#include <cstdint>
#include <memory>
#include <optional>

namespace orvane {

/// The display of the environment, which tells of every key: raw key events, and changes of the keyboard
/// map. Both functions wait for the server; call them on a pool thread.
struct KeyDisplay
{
    XcbConnection connection;
    KeyboardMap map;
    std::uint8_t inputOpcode = 0; ///< what raw key events carry
    std::uint8_t xkbEvent = 0;    ///< the type of what comes when the map has changed

    /// Null when there is no display, or one that does not tell.
    [[nodiscard]] static std::shared_ptr<KeyDisplay> open();
    /// The map as it is now, on a connection of its own; nothing when it cannot be had.
    [[nodiscard]] static std::optional<KeyboardMap> readMap();
};

} // namespace orvane
