#pragma once

#include <QByteArray>
#include <QDeadlineTimer>
#include <QHash>

#include <wayland-client.h>

#include <algorithm>
#include <cstdint>
#include <memory>

namespace orvane {

/// Ends an object that the compositor knows, by the request that its protocol has for that.
template <auto destroy>
struct WaylandDestroy
{
    void operator()(auto *object) const { destroy(object); }
};
template <typename Object, auto destroy>
using WaylandOwned = std::unique_ptr<Object, WaylandDestroy<destroy>>;

/// A connection to the compositor of the environment that is nobody else's. One thread at a time.
class WaylandDisplay
{
public:
    /// Connects and asks what there is; null when nobody answers within a second. The name is as in
    /// WAYLAND_DISPLAY.
    [[nodiscard]] static std::unique_ptr<WaylandDisplay>
    open(const QByteArray &name = qgetenv("WAYLAND_DISPLAY"));

    WaylandDisplay(const WaylandDisplay &) = delete;
    WaylandDisplay &operator=(const WaylandDisplay &) = delete;

    [[nodiscard]] wl_display *get() const { return m_display.get(); }
    /// What the compositor offers, by interface.
    [[nodiscard]] QHash<QByteArray, std::uint32_t> versions() const;

    /// The first object of the interface, in that version or what the compositor has; null when it has none.
    template <typename Object>
    [[nodiscard]] Object *bind(const wl_interface &interface, std::uint32_t version) const
    {
        const auto global = m_globals.constFind(interface.name);
        if (global == m_globals.cend())
            return nullptr;
        return static_cast<Object *>(
            wl_registry_bind(m_registry.get(), global->name, &interface, std::min(version, global->version)));
    }

    /// Sends every request and handles what comes until the compositor has answered; false when it is gone or
    /// takes too long.
    [[nodiscard]] bool roundTrip(QDeadlineTimer end);
    /// Sends what it can and handles what has come, or comes within so many milliseconds; false when the
    /// compositor is gone.
    [[nodiscard]] bool handleEvents(int patience = 0);

private:
    struct Global
    {
        std::uint32_t name = 0;
        std::uint32_t version = 0;
    };

    explicit WaylandDisplay(wl_display *display);

    WaylandOwned<wl_display, wl_display_disconnect> m_display;
    WaylandOwned<wl_registry, wl_registry_destroy> m_registry;
    QHash<QByteArray, Global> m_globals;
};

} // namespace orvane
