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
extern "C" ssize_t pread(int descriptor, void *buffer, size_t size, off_t position)
{
    const std::int64_t left = s_failsFrom - position;
    if (left <= 0) {
        errno = EIO;
        return -1;
    }
    return syscall(SYS_pread64, descriptor, buffer, std::min(size, size_t(left)), position);
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
