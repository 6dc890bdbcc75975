#pragma once

#include "app/commandline/CheckCommand.h"
#include "app/commandline/ControlCommand.h"
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
enum class Start {
    /// A user wants to see the program.
    Open,
    /// The session starts it for later.
    Background,
};
/// Be the application, or have the one that runs come forward.
struct RunApplication
{
    Start start;
    /// To transcribe, in the main window.
    QStringList files = {};
};

using Command = std::variant<ShowVersion, ShowHelp, RunApplication, TranscribeCommand::Options,
                             TextCommand::Options, HistoryCommand::Options, RetranscribeCommand::Options,
                             ModelsCommand::Options, CheckCommand::Options, ControlCommand::Options>;

/// What the arguments, without the program's name, ask for. Throws UsageError.
[[nodiscard]] Command parse(const QStringList &arguments);

/// The text of --help.
[[nodiscard]] QString help();

} // namespace orvane::CommandLine
