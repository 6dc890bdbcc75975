#pragma once

#include <QString>

#include <algorithm>

namespace orvane {

/// Whether a host's name or address means this machine, to which no proxy leads.
[[nodiscard]] inline bool isLoopback(const QString &host)
{
    const auto isOfAnAddress = [](QChar c) { return (c >= u'0' && c <= u'9') || c == u'.'; };
    return host == u"localhost" || host == u"::1" ||
           (host.startsWith(u"127.") && std::ranges::all_of(host, isOfAnAddress));
}

} // namespace orvane
