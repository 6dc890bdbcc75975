#include "desktop/wayland/WaylandDisplay.h"

#include <cerrno>
#include <chrono>
#include <cstring>

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace orvane {

namespace {

constexpr std::chrono::seconds greetingTime{1};

/// Connected to the socket of that name, or -1. Not left to the library, which would wait for a
/// compositor that accepts nobody.
int connectedSocket(const QByteArray &name)
{
    QByteArray path = name;
    if (path.isEmpty())
        return -1;
    if (!path.startsWith('/'))
        path = qgetenv("XDG_RUNTIME_DIR") + '/' + path;
    sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
    if (size_t(path.size()) >= sizeof(address.sun_path))
        return -1;
    std::memcpy(address.sun_path, path.constData(), size_t(path.size()));
    const int socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (socket < 0)
        return -1;
    if (::connect(socket, reinterpret_cast<const sockaddr *>(&address), sizeof(address)) == 0)
        return socket;
    ::close(socket);
    return -1;
}

} // namespace

std::unique_ptr<WaylandDisplay> WaylandDisplay::open(const QByteArray &name)
{
    const int socket = connectedSocket(name);
    if (socket < 0)
        return nullptr;
    wl_display *connected = wl_display_connect_to_fd(socket); // closes the socket, whatever comes of it
    if (!connected)
        return nullptr;
    std::unique_ptr<WaylandDisplay> display(new WaylandDisplay(connected));
    return display->roundTrip(QDeadlineTimer(greetingTime)) ? std::move(display) : nullptr;
}

WaylandDisplay::WaylandDisplay(wl_display *display)
    : m_display(display),
      m_registry(wl_display_get_registry(display))
{
    static constexpr wl_registry_listener listener{
        .global =
            [](void *self, wl_registry *, std::uint32_t name, const char *interface, std::uint32_t version) {
                auto &globals = static_cast<WaylandDisplay *>(self)->m_globals;
                if (!globals.contains(interface))
                    globals.insert(interface, {.name = name, .version = version});
            },
        .global_remove =
            [](void *self, wl_registry *, std::uint32_t name) {
                static_cast<WaylandDisplay *>(self)->m_globals.removeIf(
                    [name](const auto &global) { return global.value().name == name; });
            }};
    wl_registry_add_listener(m_registry.get(), &listener, this);
}

QHash<QByteArray, std::uint32_t> WaylandDisplay::versions() const
{
    QHash<QByteArray, std::uint32_t> versions;
    for (auto global = m_globals.cbegin(); global != m_globals.cend(); ++global)
        versions.insert(global.key(), global->version);
    return versions;
}

bool WaylandDisplay::roundTrip(QDeadlineTimer end)
{
    bool isAnswered = false;
    static constexpr wl_callback_listener listener{
        .done = [](void *answered, wl_callback *, std::uint32_t) { *static_cast<bool *>(answered) = true; }};
    const WaylandOwned<wl_callback, wl_callback_destroy> callback(wl_display_sync(m_display.get()));
    wl_callback_add_listener(callback.get(), &listener, &isAnswered);
    while (!isAnswered && !end.hasExpired()) {
        if (!handleEvents(int(end.remainingTime())))
            return false;
    }
    return isAnswered;
}

bool WaylandDisplay::handleEvents(int patience)
{
    wl_display *display = m_display.get();
    if (wl_display_prepare_read(display) != 0)
        return wl_display_dispatch_pending(display) >= 0; // some were waiting to be handled
    wl_display_flush(display);                            // a failure shows when it is read
    pollfd readable{.fd = wl_display_get_fd(display), .events = POLLIN, .revents = 0};
    if (::poll(&readable, 1, patience) <= 0) {
        wl_display_cancel_read(display);
        return true;
    }
    return wl_display_read_events(display) >= 0 && wl_display_dispatch_pending(display) >= 0;
}

} // namespace orvane
