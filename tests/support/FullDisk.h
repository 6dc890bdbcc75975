#pragma once

#include <QScopeGuard>

#include <csignal>

#include <sys/resource.h>

namespace orvane::test {

/// As on a disk that is full: until the result is destroyed, no file of this process grows beyond that size.
[[nodiscard]] inline auto limitFileSize(rlim_t bytes)
{
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit before{};
    ::getrlimit(RLIMIT_FSIZE, &before);
    const rlimit lower{.rlim_cur = bytes, .rlim_max = before.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &lower);
    return qScopeGuard([before] { ::setrlimit(RLIMIT_FSIZE, &before); });
}

} // namespace orvane::test
