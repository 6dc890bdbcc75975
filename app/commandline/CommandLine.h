#pragma once

#include "app/commandline/HistoryCommand.h"
#include "app/commandline/ModelsCommand.h"
#include "app/commandline/RetranscribeCommand.h"
#include "app/commandline/TextCommand.h"
#include "app/commandline/TranscribeCommand.h"

#include <QStringList>

#include <variant>

namespace orvane::CommandLine {

struct ShowVersion
{};
struct ShowHelp
{};
/// Stay in the background as the application.
struct RunApplication
{};

using Command =
    std::variant<ShowVersion, ShowHelp, RunApplication, TranscribeCommand::Options, TextCommand::Options,
                 HistoryCommand::Options, RetranscribeCommand::Options, ModelsCommand::Options>;

/// What the arguments, without the program's name, ask for. Throws UsageError.
[[nodiscard]] Command parse(const QStringList &arguments);

/// The text of --help.
[[nodiscard]] QString help();

} // namespace orvane::CommandLine
