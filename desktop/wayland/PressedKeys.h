#pragma once

#include <cstdint>

namespace orvane {

/// A keyboard that nobody sits at: this program presses its keys for the user. Keys are those of
/// <linux/input-event-codes.h>, by their places, whatever they mean in the user's layout.
class PressedKeys
{
public:
    virtual ~PressedKeys() = default;

    /// The compositor has done it by its next answer.
    virtual void set(std::uint32_t key, bool isDown) = 0;
    /// Modifiers that the user holds change what is pressed here, where they do at all.
    virtual void letGoOfModifiers() {}
};

} // namespace orvane
