#pragma once

#include <QProcess>

#include <QCoroTask>

#include <chrono>
#include <memory>
#include <stop_token>

/// The child process of an engine: its start and its end by events. Not QCoro's functions for a process,
/// because start() there does not notice a program that cannot be started, and a time limit may resume twice.
/// Main thread.
namespace orvane::EngineProcess {

/// The object lives on until its process has ended, whoever lets go of it.
using Handle = std::shared_ptr<QProcess>;

[[nodiscard]] Handle create();

/// Returns once the process runs, or cannot.
[[nodiscard]] QCoro::Task<> start(Handle process);

/// Whether the process has ended within the limit. Throws Cancelled when stopped.
[[nodiscard]] QCoro::Task<bool> untilEnded(Handle process,
                                           std::chrono::milliseconds limit = std::chrono::milliseconds::max(),
                                           std::stop_token stop = {});

/// Asks the process to end, kills it if it has not after 2 s, and waits for its end, at most 5 s more. None
/// at all has ended already.
[[nodiscard]] QCoro::Task<> end(Handle process);

} // namespace orvane::EngineProcess
