#pragma once

#include "desktop/wayland/PressedKeys.h"
#include "desktop/wayland/WaylandDisplay.h"

#include <xkbcommon/xkbcommon.h>

#include <memory>

struct zwp_virtual_keyboard_v1;

namespace orvane {

/// A keyboard with a keymap of its own beside the user's, whose modifiers do not mix into it. Some
/// compositors take the focus away for a moment when one comes or goes, so it is made once.
class VirtualKeyboard final : public PressedKeys
{
public:
    /// With that layout, such as {"us", "dvorak"}; null where programs may have none. The display outlives
    /// it.
    [[nodiscard]] static std::unique_ptr<VirtualKeyboard>
    make(const WaylandDisplay &display, const char *layout = "us", const char *variant = "");
    ~VirtualKeyboard() override;
    VirtualKeyboard(const VirtualKeyboard &) = delete;
    VirtualKeyboard &operator=(const VirtualKeyboard &) = delete;

    void set(std::uint32_t key, bool isDown) override;

private:
    VirtualKeyboard(zwp_virtual_keyboard_v1 *keyboard, xkb_keymap *keymap);

    zwp_virtual_keyboard_v1 *m_keyboard;
    std::unique_ptr<xkb_state, decltype(&xkb_state_unref)> m_state;
};

} // namespace orvane
