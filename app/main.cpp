#include "app/AppDelegate.h"
#include "app/AppServices.h"
#include "app/Display.h"
#include "app/SingleInstance.h"
#include "app/base/Async.h"
#include "app/commandline/CommandLine.h"
#include "app/commandline/CommandRun.h"
#include "app/commandline/ExitStatus.h"
#include "app/commandline/Interruption.h"
#include "app/commandline/Output.h"
#include "app/settings/BuildInfo.h"
#include "app/settings/Localization.h"
#include "app/settings/UserDefaults.h"
#include "ui/UpdateDialogs.h"

#include <QApplication>
#include <QScopeGuard>
#include <QTimer>

#include <memory>
#include <optional>

using namespace Qt::StringLiterals;
using namespace orvane;

namespace {

void write(const QString &text)
{
    Output::write(text.toUtf8());
}

int runApplication()
{
    if (SingleInstance::claim() == SingleInstance::Claim::AnotherRuns) {
        Output::complain(Localization::text(u"Orvane уже работает."_s));
        return ExitStatus::success;
    }
    std::optional<UpdateDialogs> dialogs;
    std::optional<AppServices::Windows> windows;
    if (qobject_cast<QApplication *>(QCoreApplication::instance())) {
        windows.emplace(
            AppServices::Windows{.updates = dialogs.emplace(), .openFile = UpdateDialogs::openFile});
    }
    AppServices services({.role = AppServices::Role::Application, .windows = windows});
    AppDelegate delegate(services);
    Interruption interruption;
    QObject::connect(&interruption, &Interruption::requested, &delegate, &AppDelegate::terminate);
    QTimer::singleShot(0, &delegate, &AppDelegate::applicationDidFinishLaunching);
    const int status = QCoreApplication::exec();
    delegate.applicationWillTerminate();
    return status;
}

struct Execute
{
    int operator()(CommandLine::ShowVersion) const
    {
        write(u"%1 %2 (%3)\n"_s.arg(BuildInfo::editionName, BuildInfo::version, BuildInfo::buildNumber));
        return ExitStatus::success;
    }
    int operator()(CommandLine::ShowHelp) const
    {
        write(CommandLine::help());
        return ExitStatus::success;
    }
    int operator()(CommandLine::RunApplication) const { return runApplication(); }
    template <typename Options>
    int operator()(const Options &options) const
    {
        return CommandRun::execute(options);
    }
};

/// Without a display the application runs too, for what needs no windows; it then checks for no updates.
std::unique_ptr<QCoreApplication> makeApplication(const CommandLine::Command &command, int &argc, char **argv)
{
    if (!std::holds_alternative<CommandLine::RunApplication>(command) || !hasDisplay())
        return std::make_unique<QCoreApplication>(argc, argv);
    auto application = std::make_unique<QApplication>(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    return application;
}

} // namespace

int main(int argc, char *argv[])
{
    Output::reserveStandardStreams();
    QCoreApplication::setApplicationName(u"Orvane"_s);
    QCoreApplication::setApplicationVersion(BuildInfo::version);
    // Complaints about the command line come before any service reads the settings.
    Localization::setLanguage(
        UserDefaults(UserDefaults::standardFile()).string(u"interfaceLanguage"_s).value_or(u"ru"_s));
    try {
        QStringList arguments;
        for (int i = 1; i < argc; ++i)
            arguments << QString::fromLocal8Bit(argv[i]);
        const CommandLine::Command command = CommandLine::parse(arguments);
        const auto application = makeApplication(command, argc, argv);
        const auto finish = qScopeGuard(endAbandonedTasks);
        return std::visit(Execute(), command);
    } catch (const UsageError &error) {
        Output::complain(error.description());
        Output::complain(Localization::text(u"Справка: orvane --help"_s));
        return ExitStatus::usage;
    } catch (const Error &error) {
        Output::complain(error.description());
        return ExitStatus::failure;
    }
}
