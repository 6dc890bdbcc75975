#include "app/AppDelegate.h"
#include "app/SingleInstance.h"
#include "app/commandline/CommandLine.h"
#include "app/commandline/CommandRun.h"
#include "app/commandline/ControlCommand.h"
#include "app/commandline/ExitStatus.h"
#include "app/commandline/Interruption.h"
#include "app/commandline/Output.h"
#include "app/commandline/Program.h"
#include "app/control/ControlService.h"
#include "app/services/AppServices.h"
#include "base/Async.h"
#include "base/StandardFolders.h"
#include "base/localization/Localization.h"
#include "desktop/Display.h"
#include "desktop/KeyTap.h"
#include "desktop/SessionLock.h"
#include "desktop/TextInjector.h"
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
        Output::write(CommandLine::help().toUtf8());
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

int check(CheckCommand::Options options)
{
    AppServices services({});
    CheckCommand command(services, options);
    return CommandRun::untilDone(command.run(), [&command] { command.interrupt(); });
}

/// Without a display the application runs too, for what needs no windows; it then checks for no updates.
std::unique_ptr<QCoreApplication> makeApplication(int &argc, char **argv)
{
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

/// The executable for what needs a display; the program becomes it.
int main(int argc, char *argv[])
{
    return Program::run(argc, argv, [&](const CommandLine::Command &command) {
        const auto application = makeApplication(argc, argv);
        const auto finish = qScopeGuard(endAbandonedTasks);
        if (const auto *options = std::get_if<CheckCommand::Options>(&command))
            return check(*options);
        if (const auto *options = std::get_if<CommandLine::RunApplication>(&command))
            return runApplication(*options);
        throw UsageError(Localization::text(u"Неизвестная команда: ") +
                         QCoreApplication::arguments().value(1));
    });
}
