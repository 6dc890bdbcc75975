#include "desktop/Display.h"

#include "desktop/Xcb.h"

#include <QByteArray>

#include <cstring>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace orvane {

namespace {

/// Whether somebody answers where the environment says that a Wayland compositor is.
bool hasCompositor()
{
    QByteArray path = qgetenv("WAYLAND_DISPLAY");
    if (path.isEmpty())
        return false;
    if (!path.startsWith('/'))
        path = qgetenv("XDG_RUNTIME_DIR") + '/' + path;
    sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
    if (size_t(path.size()) >= sizeof(address.sun_path))
        return false;
    std::memcpy(address.sun_path, path.constData(), size_t(path.size()));
    const int socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (socket < 0)
        return false;
    const bool answers =
        ::connect(socket, reinterpret_cast<const sockaddr *>(&address), sizeof(address)) == 0;
    ::close(socket);
    return answers;
}

} // namespace

bool hasDisplay()
{
    // Qt ends the program when nobody answers.
    return !qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM") || hasCompositor() ||
           (!qEnvironmentVariableIsEmpty("DISPLAY") && XcbConnection::open());
}

} // namespace orvane
