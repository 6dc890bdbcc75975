#pragma once

#include "desktop/wayland/PressedKeys.h"
#include "desktop/wayland/WaylandDisplay.h"

#include <fake-input.h>

#include <memory>

namespace orvane {

/// Keys that KWin takes from programs whose installed desktop entry asks for that. They count as pressed on
/// the user's own keyboard.
class FakeInput final : public PressedKeys
{
public:
    /// Null where this program may not. The display outlives it.
    [[nodiscard]] static std::unique_ptr<FakeInput> make(const WaylandDisplay &display);

    void set(std::uint32_t key, bool isDown) override;
    void letGoOfModifiers() override;

private:
    using Handle = WaylandOwned<org_kde_kwin_fake_input, org_kde_kwin_fake_input_destroy>;

    explicit FakeInput(Handle input) : m_input(std::move(input)) {}

    Handle m_input;
};

} // namespace orvane
