#include "app/AppDelegate.h"
#include "app/SingleInstance.h"
#include "app/commandline/CommandLine.h"
#include "app/commandline/CommandRun.h"
#include "app/commandline/ControlCommand.h"
#include "app/commandline/ExitStatus.h"
#include "app/commandline/Interruption.h"
#include "app/commandline/Output.h"
#include "app/control/ControlService.h"
#include "app/services/AppServices.h"
#include "base/Async.h"
#include "base/StandardFolders.h"
#include "base/localization/Localization.h"
#include "desktop/Display.h"
#include "desktop/KeyTap.h"
#include "desktop/SessionLock.h"
#include "desktop/TextInjector.h"
#include "settings/BuildInfo.h"
#include "settings/UserDefaults.h"
#include "ui/Dialogs.h"
#include "ui/DictationPanel.h"
#include "ui/FileDialogs.h"

#include <QApplication>
#include <QFileInfo>
#include <QScopeGuard>
#include <QTimer>

#include <array>
#include <memory>
#include <optional>

using namespace Qt::StringLiterals;
using namespace orvane;

namespace {

void write(const QString &text)
{
    Output::write(text.toUtf8());
}

/// What the program hears and shows on a display.
struct DesktopParts
{
    Dialogs dialogs;
    FileDialogs files;
    std::unique_ptr<KeyTap> keys = KeyTap::forDisplay();
    std::unique_ptr<SessionLock> lock = SessionLock::ofThisSession();
    std::unique_ptr<TextInjector> injector = TextInjector::forDisplay();
    DictationPanel indicator{StandardFolders::ofUser().resources, *keys};

    [[nodiscard]] AppServices::Desktop forServices()
    {
        return {.updates = dialogs,
                .guidance = dialogs,
                .indicator = indicator,
                .injector = *injector,
                .openFile = Dialogs::openFile};
    }
    [[nodiscard]] AppDelegate::Desktop forDelegate()
    {
        return {.guidance = dialogs, .keys = *keys, .lock = *lock, .files = files};
    }
};

QList<QUrl> urlsOf(const QStringList &files)
{
    QList<QUrl> urls;
    for (const QString &file : files)
        urls.append(QUrl::fromLocalFile(QFileInfo(file).absoluteFilePath()));
    return urls;
}

int runApplication(CommandLine::RunApplication options)
{
    const bool hasWindows = qobject_cast<QApplication *>(QCoreApplication::instance()) != nullptr;
    if (!hasWindows && options.start == CommandLine::Start::Open) {
        write(CommandLine::help());
        return ExitStatus::success;
    }
    ControlService control;
    control.publish();
    AppServices::Environment environment{.role = AppServices::Role::Application};
    SingleInstance instance;
    if (instance.claim(environment.folders.orvane()) == SingleInstance::Claim::AnotherRuns) {
        Output::complain(Localization::text(u"Orvane уже работает."));
        if (options.start == CommandLine::Start::Open)
            ControlCommand::activate(options.files);
        return ExitStatus::success;
    }
    std::optional<DesktopParts> desktop;
    if (hasWindows)
        environment.desktop.emplace(desktop.emplace().forServices());
    AppServices services(environment);
    AppDelegate delegate(services, control, desktop ? std::optional(desktop->forDelegate()) : std::nullopt);
    QObject::connect(&delegate, &AppDelegate::quitting, &delegate, [&instance] { instance.giveUpName(); });
    if (desktop)
        QObject::connect(&desktop->indicator, &DictationPanel::noticeNotShown, &delegate,
                         &AppDelegate::notify);
    Interruption interruption;
    QObject::connect(&interruption, &Interruption::requested, &delegate, &AppDelegate::quit);
    const bool showsWindow =
        options.start == CommandLine::Start::Open || qEnvironmentVariable("ORVANE_PREVIEW") == "1"_L1;
    QTimer::singleShot(0, &delegate, [&delegate, &options, showsWindow] {
        delegate.applicationDidFinishLaunching();
        if (showsWindow)
            delegate.open(urlsOf(options.files));
    });
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
    int operator()(CommandLine::RunApplication options) const { return runApplication(options); }
    int operator()(const ControlCommand::Options &options) const { return ControlCommand::run(options); }
    template <typename Options>
    int operator()(const Options &options) const
    {
        return CommandRun::execute(options);
    }
};

bool usesDisplay(const CommandLine::Command &command)
{
    return std::holds_alternative<CommandLine::RunApplication>(command) ||
           std::holds_alternative<CheckCommand::Options>(command);
}

/// Without a display the application runs too, for what needs no windows; it then checks for no updates.
std::unique_ptr<QCoreApplication> makeApplication(const CommandLine::Command &command, int &argc, char **argv)
{
    if (!usesDisplay(command))
        return std::make_unique<QCoreApplication>(argc, argv);
    const QString platform = displayPlatform();
    if (platform.isEmpty()) {
        if (const QString wanted = qEnvironmentVariable("QT_QPA_PLATFORM"); !wanted.isEmpty())
            Output::complain(
                Localization::text(u"Окна показать негде: %1. Orvane работает без экрана.").arg(wanted));
        return std::make_unique<QCoreApplication>(argc, argv);
    }
    // As an argument: the environment would be that of the programs opened from here too.
    static QByteArray option = "-platform";
    static QByteArray name = platform.toLocal8Bit();
    static std::array<char *, 4> arguments = {argv[0], option.data(), name.data(), nullptr};
    static int count = 3;
    auto application = std::make_unique<QApplication>(count, arguments.data());
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
        Output::complain(Localization::text(u"Справка: orvane --help"));
        return ExitStatus::usage;
    } catch (const Error &error) {
        Output::complain(error.description());
        return ExitStatus::failure;
    }
}
