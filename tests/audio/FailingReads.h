#pragma once

#include <cstdint>

namespace orvane {

/// While one lives, reading a file by position fails beyond that place, as on a damaged disk.
class FailingReads
{
public:
    explicit FailingReads(std::int64_t from);
    ~FailingReads();
    FailingReads(const FailingReads &) = delete;
    FailingReads &operator=(const FailingReads &) = delete;
};

} // namespace orvane
