#include "app/AppDelegate.h"
#include "app/AppServices.h"
#include "app/Display.h"
#include "app/SingleInstance.h"
#include "app/base/Async.h"
#include "app/commandline/CommandLine.h"
#include "app/commandline/ExitStatus.h"
#include "app/commandline/Interruption.h"
#include "app/commandline/Output.h"
#include "app/settings/BuildInfo.h"
#include "app/settings/Localization.h"
#include "app/settings/UserDefaults.h"
#include "ui/UpdateDialogs.h"

#include <QApplication>
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

/// Runs the event loop for one command until it is done or a signal ended it.
class CommandRun
{
public:
    explicit CommandRun(AppServices &services) : m_services(services) {}

    int execute(const TranscribeCommand::Options &options)
    {
        TranscribeCommand command(m_services, options);
        return untilDone(command.run(), [&command] { command.interrupt(); });
    }

    int execute(const HistoryCommand::Options &options)
    {
        HistoryCommand command(m_services.history(), options);
        return untilDone(command.run(), [] {});
    }

private:
    template <typename Interrupt>
    int untilDone(QCoro::Task<int> task, const Interrupt &interrupt)
    {
        Interruption interruption;
        std::optional<int> signal;
        QObject::connect(&interruption, &Interruption::requested, &interruption, [&](int number) {
            signal = number;
            interrupt();
        });
        const int status = run(std::move(task));
        return signal ? Interruption::exitStatus(*signal) : status;
    }

    static int run(QCoro::Task<int> task)
    {
        std::optional<int> status;
        spawn(finish(std::move(task), &status));
        if (!status)
            QCoreApplication::exec();
        return status.value_or(ExitStatus::failure);
    }

    static QCoro::Task<> finish(QCoro::Task<int> task, std::optional<int> *status)
    {
        try {
            *status = co_await std::move(task);
        } catch (const Error &error) {
            Output::complain(error.description());
            *status = ExitStatus::failure;
        }
        QCoreApplication::quit();
    }

    AppServices &m_services;
};

int runApplication()
{
    if (SingleInstance::claim() == SingleInstance::Claim::AnotherRuns) {
        Output::complain(Localization::text(u"Orvane уже работает."_s));
        return ExitStatus::success;
    }
    std::optional<UpdateDialogs> dialogs;
    std::optional<AppServices::Windows> windows;
    if (qobject_cast<QApplication *>(qApp)) {
        windows.emplace(
            AppServices::Windows{.updates = dialogs.emplace(), .openFile = UpdateDialogs::openFile});
    }
    AppServices services(AppServices::Role::Application, StandardFolders::ofUser(),
                         UserDefaults::standardFile(), windows);
    AppDelegate delegate(services);
    Interruption interruption;
    QObject::connect(&interruption, &Interruption::requested, qApp, [] { QCoreApplication::quit(); });
    QTimer::singleShot(0, &delegate, &AppDelegate::applicationDidFinishLaunching);
    const int status = QCoreApplication::exec();
    delegate.applicationWillTerminate();
    return status;
}

template <typename Options>
int runCommand(const Options &options)
{
    AppServices services(AppServices::Role::CommandLine, StandardFolders::ofUser(),
                         UserDefaults::standardFile());
    return CommandRun(services).execute(options);
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
    int operator()(const TranscribeCommand::Options &options) const { return runCommand(options); }
    int operator()(const HistoryCommand::Options &options) const { return runCommand(options); }
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
