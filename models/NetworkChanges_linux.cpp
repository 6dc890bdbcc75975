#include "models/NetworkChanges.h"

#include <QScopeGuard>

#include <arpa/inet.h>
#include <linux/rtnetlink.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace orvane {

namespace {

/// Addresses of the documentation's networks, which are reached as any address of the internet is.
constexpr auto farAddress = "203.0.113.1";
constexpr auto farAddress6 = "2001:db8::1";

/// A datagram socket sends nothing when it is connected, but needs a route.
template <typename Address>
bool hasRoute(const Address &address, int family)
{
    const int descriptor = ::socket(family, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (descriptor < 0)
        return false;
    const auto close = qScopeGuard([descriptor] { ::close(descriptor); });
    return ::connect(descriptor, reinterpret_cast<const sockaddr *>(&address), sizeof(address)) == 0;
}

int routeSocket()
{
    const int descriptor = ::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC | SOCK_NONBLOCK, NETLINK_ROUTE);
    sockaddr_nl address{};
    address.nl_family = AF_NETLINK;
    address.nl_groups = RTMGRP_IPV4_ROUTE | RTMGRP_IPV6_ROUTE;
    if (descriptor < 0 ||
        ::bind(descriptor, reinterpret_cast<const sockaddr *>(&address), sizeof(address)) == 0)
        return descriptor;
    ::close(descriptor);
    return -1;
}

} // namespace

NetworkChanges::NetworkChanges() : m_descriptor(routeSocket()) {}

NetworkChanges::~NetworkChanges()
{
    if (m_descriptor >= 0)
        ::close(m_descriptor);
}

bool NetworkChanges::isConnected()
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(443);
    ::inet_pton(AF_INET, farAddress, &address.sin_addr);
    sockaddr_in6 address6{};
    address6.sin6_family = AF_INET6;
    address6.sin6_port = htons(443);
    ::inet_pton(AF_INET6, farAddress6, &address6.sin6_addr);
    return hasRoute(address, AF_INET) || hasRoute(address6, AF_INET6);
}

} // namespace orvane
