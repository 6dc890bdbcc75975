#pragma once

#include "base/Error.h"

namespace orvane {

/// What a script can rely on. A signal ends the program with 128 + its number instead.
namespace ExitStatus {
inline constexpr int success = 0;
/// Something could not be done; standard error says what in one sentence.
inline constexpr int failure = 1;
/// The command line itself was wrong; nothing was done.
inline constexpr int usage = 2;
} // namespace ExitStatus

/// The command line was wrong.
class UsageError : public Error
{
public:
    using Error::Error;
};

} // namespace orvane
