#pragma once

#include "app/commandline/HistoryCommand.h"
#include "app/commandline/ModelsCommand.h"
#include "app/commandline/RetranscribeCommand.h"
#include "app/commandline/TextCommand.h"
#include "app/commandline/TranscribeCommand.h"

#include <QCoroTask>

#include <functional>

/// Runs one command in the event loop until it is done or a signal ends it; returns the exit status.
/// The services live as long as the command. Needs a QCoreApplication whose loop does not run yet.
namespace orvane::CommandRun {

[[nodiscard]] int execute(const TranscribeCommand::Options &options);
[[nodiscard]] int execute(const TextCommand::Options &options);
[[nodiscard]] int execute(const HistoryCommand::Options &options);
[[nodiscard]] int execute(const RetranscribeCommand::Options &options);
[[nodiscard]] int execute(const ModelsCommand::Options &options);

/// The same for a command whose task was begun and which `interrupt` ends.
[[nodiscard]] int untilDone(QCoro::Task<int> task, const std::function<void()> &interrupt);

} // namespace orvane::CommandRun
