#include "desktop/wayland/FakeInput.h"

#include <linux/input-event-codes.h>

namespace orvane {

namespace {

constexpr std::uint32_t sinceKeys = 4; // the version of the protocol

} // namespace

std::unique_ptr<FakeInput> FakeInput::make(const WaylandDisplay &display)
{
    if (display.versions().value(org_kde_kwin_fake_input_interface.name) < sinceKeys)
        return nullptr;
    Handle input(display.bind<org_kde_kwin_fake_input>(org_kde_kwin_fake_input_interface, sinceKeys));
    org_kde_kwin_fake_input_authenticate(input.get(), "Orvane", "Paste what was dictated");
    return std::unique_ptr<FakeInput>(new FakeInput(std::move(input)));
}

void FakeInput::set(std::uint32_t key, bool isDown)
{
    org_kde_kwin_fake_input_keyboard_key(
        m_input.get(), key, isDown ? WL_KEYBOARD_KEY_STATE_PRESSED : WL_KEYBOARD_KEY_STATE_RELEASED);
}

void FakeInput::letGoOfModifiers()
{
    // Which of them the user holds is not said here, and a key that is up stays up.
    for (const auto key : {KEY_LEFTCTRL, KEY_RIGHTCTRL, KEY_LEFTSHIFT, KEY_RIGHTSHIFT, KEY_LEFTALT,
                           KEY_RIGHTALT, KEY_LEFTMETA, KEY_RIGHTMETA})
        set(std::uint32_t(key), false);
}

} // namespace orvane
