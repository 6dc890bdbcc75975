#pragma once

#include <wayland-client.h>

#include <array>
#include <cstdint>

// The protocol virtual-keyboard-unstable-v1, whose description no package of Debian 12 has: its two
// interfaces, and a function for each request, named as a generator would name them.

struct zwp_virtual_keyboard_manager_v1;
struct zwp_virtual_keyboard_v1;

namespace orvane {

namespace virtual_keyboard {

inline std::array<const wl_interface *, 4> plain{}; // arguments that are no objects

inline const std::array keyboardRequests{
    wl_message{.name = "keymap", .signature = "uhu", .types = plain.data()},
    wl_message{.name = "key", .signature = "uuu", .types = plain.data()},
    wl_message{.name = "modifiers", .signature = "uuuu", .types = plain.data()},
    wl_message{.name = "destroy", .signature = "", .types = plain.data()},
};

} // namespace virtual_keyboard

inline const wl_interface zwp_virtual_keyboard_v1_interface{
    .name = "zwp_virtual_keyboard_v1",
    .version = 1,
    .method_count = int(virtual_keyboard::keyboardRequests.size()),
    .methods = virtual_keyboard::keyboardRequests.data(),
    .event_count = 0,
    .events = nullptr,
};

namespace virtual_keyboard {

inline std::array created{&wl_seat_interface, &zwp_virtual_keyboard_v1_interface};
inline const wl_message managerRequest{
    .name = "create_virtual_keyboard", .signature = "on", .types = created.data()};

/// Any object of a protocol is a proxy to the library.
inline wl_proxy *proxy(auto *object)
{
    return reinterpret_cast<wl_proxy *>(object);
}

} // namespace virtual_keyboard

inline const wl_interface zwp_virtual_keyboard_manager_v1_interface{
    .name = "zwp_virtual_keyboard_manager_v1",
    .version = 1,
    .method_count = 1,
    .methods = &virtual_keyboard::managerRequest,
    .event_count = 0,
    .events = nullptr,
};

inline zwp_virtual_keyboard_v1 *
zwp_virtual_keyboard_manager_v1_create_virtual_keyboard(zwp_virtual_keyboard_manager_v1 *manager,
                                                        wl_seat *seat)
{
    return reinterpret_cast<zwp_virtual_keyboard_v1 *>(wl_proxy_marshal_flags(
        virtual_keyboard::proxy(manager), 0, &zwp_virtual_keyboard_v1_interface, 1, 0, seat, nullptr));
}

inline void zwp_virtual_keyboard_manager_v1_destroy(zwp_virtual_keyboard_manager_v1 *manager)
{
    wl_proxy_destroy(virtual_keyboard::proxy(manager));
}

inline void zwp_virtual_keyboard_v1_keymap(zwp_virtual_keyboard_v1 *keyboard, std::uint32_t format, int file,
                                           std::uint32_t size)
{
    wl_proxy_marshal_flags(virtual_keyboard::proxy(keyboard), 0, nullptr, 1, 0, format, file, size);
}

inline void zwp_virtual_keyboard_v1_key(zwp_virtual_keyboard_v1 *keyboard, std::uint32_t time,
                                        std::uint32_t key, std::uint32_t state)
{
    wl_proxy_marshal_flags(virtual_keyboard::proxy(keyboard), 1, nullptr, 1, 0, time, key, state);
}

inline void zwp_virtual_keyboard_v1_modifiers(zwp_virtual_keyboard_v1 *keyboard, std::uint32_t depressed,
                                              std::uint32_t latched, std::uint32_t locked,
                                              std::uint32_t layout)
{
    wl_proxy_marshal_flags(virtual_keyboard::proxy(keyboard), 2, nullptr, 1, 0, depressed, latched, locked,
                           layout);
}

inline void zwp_virtual_keyboard_v1_destroy(zwp_virtual_keyboard_v1 *keyboard)
{
    wl_proxy_marshal_flags(virtual_keyboard::proxy(keyboard), 3, nullptr, 1, WL_MARSHAL_FLAG_DESTROY);
}

} // namespace orvane
