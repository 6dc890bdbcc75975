#pragma once

#include "app/commandline/CommandLine.h"

#include <functional>

/// What the executables of the program have in common.
namespace orvane::Program {

/// Has the command executed that the arguments ask for, and says in one line on standard error what went
/// wrong. Returns the exit status. Call first thing in main().
[[nodiscard]] int run(int argc, char **argv,
                      const std::function<int(const CommandLine::Command &command)> &execute);

} // namespace orvane::Program
