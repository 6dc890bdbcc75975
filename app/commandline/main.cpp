#include "app/commandline/CommandRun.h"
#include "app/commandline/ControlCommand.h"
#include "app/commandline/ExitStatus.h"
#include "app/commandline/Output.h"
#include "app/commandline/Program.h"
#include "base/Async.h"
#include "base/localization/Localization.h"
#include "settings/BuildInfo.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QScopeGuard>
#include <QVarLengthArray>

#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace orvane;

namespace {

/// Goes on in this process as the executable that has windows: it takes longer to start.
[[noreturn]] void becomeDesktopProgram(char **argv)
{
    const QString program =
        QDir::cleanPath(QCoreApplication::applicationDirPath() + u"/../libexec/orvane-desktop"_s);
    ::execv(QFile::encodeName(program).constData(), argv);
    throw Error(Localization::text(u"Окна Orvane не открываются: программа установлена не полностью."));
}

struct Execute
{
    int operator()(CommandLine::ShowVersion) const
    {
        Output::write(
            u"%1 %2 (%3)\n"_s.arg(BuildInfo::editionName, BuildInfo::version, BuildInfo::buildNumber)
                .toUtf8());
        return ExitStatus::success;
    }
    int operator()(CommandLine::ShowHelp) const
    {
        Output::write(CommandLine::help().toUtf8());
        return ExitStatus::success;
    }
    int operator()(const CommandLine::RunApplication &) const { becomeDesktopProgram(argv); }
    int operator()(const CheckCommand::Options &) const { becomeDesktopProgram(argv); }
    int operator()(const ControlCommand::Options &options) const { return ControlCommand::run(options); }
    template <typename Options>
    int operator()(const Options &options) const
    {
        return CommandRun::execute(options);
    }

    char **argv;
};

} // namespace

int main(int argc, char *argv[])
{
    return Program::run(argc, argv, [&](const CommandLine::Command &command) {
        QVarLengthArray<char *> arguments(argv, argv + argc + 1); // Qt takes out what it understands
        const QCoreApplication application(argc, argv);
        const auto finish = qScopeGuard(endAbandonedTasks);
        return std::visit(Execute{.argv = arguments.data()}, command);
    });
}
