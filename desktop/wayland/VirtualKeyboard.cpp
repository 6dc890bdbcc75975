#include "desktop/wayland/VirtualKeyboard.h"

#include "desktop/wayland/VirtualKeyboardProtocol.h"

#include <chrono>
#include <cstdlib>
#include <cstring>

#include <sys/mman.h>
#include <unistd.h>

namespace orvane {

namespace {

template <typename Object, auto unref>
using XkbOwned = std::unique_ptr<Object, WaylandDestroy<unref>>;

/// What a keymap knows of keys begins there, for the sake of X11.
constexpr std::uint32_t firstKeycode = 8;

std::uint32_t milliseconds()
{
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::uint32_t(std::chrono::duration_cast<std::chrono::milliseconds>(now).count());
}

void sendKeymap(zwp_virtual_keyboard_v1 *keyboard, xkb_keymap *keymap)
{
    const std::unique_ptr<char, WaylandDestroy<std::free>> text(
        xkb_keymap_get_as_string(keymap, XKB_KEYMAP_FORMAT_TEXT_V1));
    const size_t size = std::strlen(text.get()) + 1;
    const int file = ::memfd_create("keymap", MFD_CLOEXEC);
    if (::write(file, text.get(), size) == ssize_t(size))
        zwp_virtual_keyboard_v1_keymap(keyboard, WL_KEYBOARD_KEYMAP_FORMAT_XKB_V1, file, std::uint32_t(size));
    ::close(file);
}

} // namespace

std::unique_ptr<VirtualKeyboard> VirtualKeyboard::make(const WaylandDisplay &display, const char *layout,
                                                       const char *variant)
{
    const WaylandOwned<zwp_virtual_keyboard_manager_v1, zwp_virtual_keyboard_manager_v1_destroy> manager(
        display.bind<zwp_virtual_keyboard_manager_v1>(zwp_virtual_keyboard_manager_v1_interface, 1));
    const WaylandOwned<wl_seat, wl_seat_destroy> seat(display.bind<wl_seat>(wl_seat_interface, 1));
    if (!manager || !seat)
        return nullptr;
    const XkbOwned<xkb_context, xkb_context_unref> context(xkb_context_new(XKB_CONTEXT_NO_FLAGS));
    const xkb_rule_names names{
        .rules = "evdev", .model = "pc105", .layout = layout, .variant = variant, .options = ""};
    const XkbOwned<xkb_keymap, xkb_keymap_unref> keymap(
        context ? xkb_keymap_new_from_names(context.get(), &names, XKB_KEYMAP_COMPILE_NO_FLAGS) : nullptr);
    if (!keymap)
        return nullptr;
    zwp_virtual_keyboard_v1 *keyboard =
        zwp_virtual_keyboard_manager_v1_create_virtual_keyboard(manager.get(), seat.get());
    return std::unique_ptr<VirtualKeyboard>(new VirtualKeyboard(keyboard, keymap.get()));
}

VirtualKeyboard::VirtualKeyboard(zwp_virtual_keyboard_v1 *keyboard, xkb_keymap *keymap)
    : m_keyboard(keyboard),
      m_state(xkb_state_new(keymap), &xkb_state_unref)
{
    sendKeymap(keyboard, keymap);
}

VirtualKeyboard::~VirtualKeyboard()
{
    zwp_virtual_keyboard_v1_destroy(m_keyboard);
}

void VirtualKeyboard::set(std::uint32_t key, bool isDown)
{
    zwp_virtual_keyboard_v1_key(m_keyboard, milliseconds(), key,
                                isDown ? WL_KEYBOARD_KEY_STATE_PRESSED : WL_KEYBOARD_KEY_STATE_RELEASED);
    xkb_state *state = m_state.get();
    if (xkb_state_update_key(state, key + firstKeycode, isDown ? XKB_KEY_DOWN : XKB_KEY_UP) == 0)
        return;
    zwp_virtual_keyboard_v1_modifiers(m_keyboard, xkb_state_serialize_mods(state, XKB_STATE_MODS_DEPRESSED),
                                      xkb_state_serialize_mods(state, XKB_STATE_MODS_LATCHED),
                                      xkb_state_serialize_mods(state, XKB_STATE_MODS_LOCKED),
                                      xkb_state_serialize_layout(state, XKB_STATE_LAYOUT_EFFECTIVE));
}

} // namespace orvane
