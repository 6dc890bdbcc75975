#include "FailingReads.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <limits>

#include <sys/syscall.h>
#include <unistd.h>

namespace {

constexpr auto never = std::numeric_limits<std::int64_t>::max();
std::atomic<std::int64_t> s_failsFrom = never;

} // namespace

// Takes the place of the C library's function in this program.
extern "C" ssize_t pread(int fd, void *buf, size_t nbytes, off_t offset)
{
    const std::int64_t left = s_failsFrom - offset;
    if (left <= 0) {
        errno = EIO;
        return -1;
    }
    return syscall(SYS_pread64, fd, buf, std::min(nbytes, size_t(left)), offset);
}

namespace orvane {

FailingReads::FailingReads(std::int64_t from)
{
    s_failsFrom = from;
}

FailingReads::~FailingReads()
{
    s_failsFrom = never;
}

} // namespace orvane
