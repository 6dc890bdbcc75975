#include "engine/PortReservation.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace orvane {

// Not QTcpServer: it listens, and a port that was listened on may be refused to the next one.
quint16 orvaneReserveFreePort(quint16 fallback)
{
    const int socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (socket < 0)
        return fallback;

    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof(address);
    auto *generic = reinterpret_cast<sockaddr *>(&address);
    const bool reserved =
        ::bind(socket, generic, length) == 0 && ::getsockname(socket, generic, &length) == 0;
    ::close(socket);
    return reserved ? ntohs(address.sin_port) : fallback;
}

} // namespace orvane
