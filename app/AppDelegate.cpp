#include "app/AppDelegate.h"

#include "app/Termination.h"
#include "app/control/ControlService.h"
#include "base/Async.h"
#include "base/localization/Localization.h"
#include "desktop/KeyTap.h"
#include "desktop/PasteAccess.h"
#include "desktop/SessionLock.h"
#include "desktop/ShortcutTexts.h"
#include "dictation/Guidance.h"
#include "ui/MenuBarController.h"
#include "ui/WindowController.h"
#include "ui/presentation/Desk.h"

#include <QEvent>
#include <QGuiApplication>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orvane {

namespace {

constexpr auto launchTime = 3000ms;
constexpr auto untilReopened = 400ms;

std::chrono::nanoseconds uptime()
{
    return std::chrono::steady_clock::now().time_since_epoch();
}

} // namespace

AppDelegate::AppDelegate(AppServices &services, ControlService &control,
                         const std::optional<Desktop> &desktop, QObject *parent)
    : QObject(parent),
      m_services(services),
      m_desktop(desktop ? std::make_unique<const Desktop>(*desktop) : nullptr),
      m_trigger(uptime)
{
    m_sinceLaunch.start();
    QCoreApplication::instance()->installEventFilter(this);
    if (auto *application = qobject_cast<QGuiApplication *>(QCoreApplication::instance())) {
        connect(application, &QGuiApplication::commitDataRequest, this, &AppDelegate::answerSession);
        connect(application, &QGuiApplication::saveStateRequest, this, [](QSessionManager &session) {
            session.setRestartHint(
                QSessionManager::RestartNever); // autostart begins us anew, without windows
        });
    }
    connect(&control, &ControlService::quitRequested, this, &AppDelegate::quit);
    connect(&control, &ControlService::tapped, this, [this] {
        const TriggerKey key = m_services.settings().dictationTrigger();
        triggerKeyChanged(key, true);
        triggerKeyChanged(key, false);
    });
    connect(&control, &ControlService::activated, this,
            [this](const QStringList &addresses, const QString &token) {
                spawn(reopen(QUrl::fromStringList(addresses), token));
            });
    connect(&control, &ControlService::actionActivated, this,
            [this](const QString &name, const QString &token) {
                if (name == "settings"_L1 && m_windows)
                    m_windows->showSettings({}, token);
                else
                    spawn(reopen({}, token));
            });
    control.serve(m_services.dictation(), m_services.meeting());
}

AppDelegate::~AppDelegate()
{
    m_scope.end();
}

void AppDelegate::applicationDidFinishLaunching()
{
    if (DictationController *dictation = m_services.dictation(); dictation && m_desktop) {
        showMenu(*dictation);
        prepareWindows();
        listenToKeys(*dictation);
    }
    m_services.engineProcesses().killStaleProcesses();
    m_services.history().watch();
    spawn(findLeftovers());
    if (UpdateChecker *updates = m_services.updates())
        updates->start();
    m_services.telemetry().start();
}

void AppDelegate::listenToKeys(DictationController &dictation)
{
    KeyTap &keys = m_desktop->keys;
    connect(&keys, &KeyTap::triggerKeyChanged, this, &AppDelegate::triggerKeyChanged);
    connect(&keys, &KeyTap::otherKeyPressed, this, [this, &keys] {
        // Two letters of the third level in a row are typing, not a double press.
        if (m_services.settings().dictationTrigger() == TriggerKey::RightOption && keys.rightOptionTypes())
            m_trigger.reset();
    });
    connect(&keys, &KeyTap::togglePressed, &dictation, [this, &dictation] {
        if (!m_desktop->lock.isLocked())
            dictation.toggle();
    });
    connect(&keys, &KeyTap::escapePressed, &dictation, &DictationController::cancel);
    connect(&dictation, &DictationController::stateChanged, &keys,
            [&keys, &dictation] { keys.setEscapeIntercepted(dictation.interceptsEscape()); });
    connect(&keys, &KeyTap::activeChanged, &dictation,
            [&keys, &dictation] { dictation.setHotkeyActive(keys.isActive()); });
    AppSettings &settings = m_services.settings();
    connect(&settings, &AppSettings::dictationTriggerChanged, &keys,
            [&keys, &settings] { keys.setTrigger(settings.dictationTrigger()); });
    keys.setTrigger(settings.dictationTrigger());
    keys.install();
    dictation.setHotkeyActive(keys.isActive());
}

void AppDelegate::triggerKeyChanged(TriggerKey key, bool down)
{
    // Whoever types at a locked screen is not dictating.
    if (m_desktop && m_desktop->lock.isLocked())
        m_trigger.reset();
    else if (m_trigger.keyChanged(m_services.settings().dictationTrigger(), key, down))
        m_services.dictation()->toggle();
}

void AppDelegate::showMenu(DictationController &dictation)
{
    m_menuBar =
        std::make_unique<MenuBarController>(MenuBarController::Services{.settings = m_services.settings(),
                                                                        .models = m_services.models(),
                                                                        .dictation = dictation,
                                                                        .meeting = m_services.meeting(),
                                                                        .updates = *m_services.updates(),
                                                                        .keys = m_desktop->keys});
    connect(m_menuBar.get(), &MenuBarController::quitRequested, this, &AppDelegate::quit);
    connect(m_menuBar.get(), &MenuBarController::keyCaptureHelpRequested, this,
            &AppDelegate::explainKeyCapture);
    KeyTap &keys = m_desktop->keys;
    connect(m_menuBar.get(), &MenuBarController::keySetUpRequested, &keys, &KeyTap::setUp);
    connect(m_menuBar.get(), &MenuBarController::pasteConsentRequested, m_menuBar.get(),
            [this] { spawn(askForPaste()); });
    connect(&keys, &KeyTap::setUpEnded, m_menuBar.get(), [this, &keys](const QString &problem) {
        const auto shortcuts = keys.shortcuts();
        notify(problem.isEmpty() && shortcuts
                   ? Localization::text(u"Клавиши назначены: %1.").arg(ShortcutTexts::keys(*shortcuts))
                   : problem);
    });
}

void AppDelegate::prepareWindows()
{
    m_windows = std::make_unique<WindowController>(WindowController::Services{
        .settings = m_services.settings(),
        .defaults = m_services.defaults(),
        .makeDesk = [this] { return std::make_unique<Desk>(m_services, m_desktop->keys, m_desktop->files); },
        .moduleFolder = m_services.folders().resources});
    WindowController *windows = m_windows.get();
    connect(m_menuBar.get(), &MenuBarController::mainWindowRequested, windows,
            [windows] { windows->showMain(); });
    connect(m_menuBar.get(), &MenuBarController::modelSettingsRequested, windows,
            [windows] { windows->showSettings(u"models"_s); });
    connect(m_menuBar.get(), &MenuBarController::settingsRequested, windows,
            [windows] { windows->showSettings(); });
    connect(windows, &WindowController::quitRequested, this, &AppDelegate::quit);
    connect(windows, &WindowController::failed, this, &AppDelegate::notify);
    connect(windows, &WindowController::mainAppeared, this,
            [this] { m_services.telemetry().pingIfEnabled(); });
}

void AppDelegate::open(const QList<QUrl> &files)
{
    if (m_windows)
        m_windows->openFiles(files);
}

// A program that has just been started is still bringing up its window.
QCoro::Task<> AppDelegate::reopen(QList<QUrl> files, QString token)
{
    const std::chrono::milliseconds sinceLaunch(m_sinceLaunch.elapsed());
    co_await m_scope(sleepFor(std::max(launchTime - sinceLaunch, 0ms) + untilReopened));
    if (m_windows && !m_isQuitting)
        m_windows->openFiles(files, token);
}

QCoro::Task<> AppDelegate::askForPaste()
{
    notify(Localization::text(
        u"Рабочий стол спросит об удалённом управлении: разрешите его и оставьте «Запомнить». Orvane только "
        u"нажимает вставку."));
    try {
        co_await m_scope(PasteAccess::ask());
        notify(Localization::text(u"Текст вставляется туда, где стоит курсор."));
    } catch (const Gone &) {
        throw;
    } catch (const Error &error) {
        notify(error.description());
    }
}

void AppDelegate::explainKeyCapture()
{
    m_desktop->guidance.guide(
        Localization::text(u"Клавиши диктовки здесь недоступны"),
        Localization::text(
            u"Этот рабочий стол не даёт программам слушать клавиши. Назначьте в его настройках сочетание "
            "клавиш для команды «orvane toggle»: первое нажатие начнёт диктовку, второе закончит."));
}

void AppDelegate::notify(const QString &text)
{
    if (m_menuBar)
        m_menuBar->notify(text);
}

QCoro::Task<> AppDelegate::findLeftovers()
{
    MeetingTranscriber &meeting = m_services.meeting();
    co_await m_scope(meeting.findLeftovers());
    if (!meeting.leftovers().isEmpty())
        notify(Localization::text(u"Запись совещания не расшифрована") + u": "_s +
               meetingTitle(meeting.leftovers().constFirst().startedAt) + u". "_s +
               Localization::text(u"Расшифровать можно из меню Orvane."));
}

bool AppDelegate::sessionMayEndIt() const
{
    const std::chrono::nanoseconds sinceLaunch(m_sinceLaunch.nsecsElapsed());
    return Termination::isHonoured(Termination::Source::Session, sinceLaunch);
}

void AppDelegate::answerSession(QSessionManager &session)
{
    session.setRestartHint(QSessionManager::RestartNever);
    if (!sessionMayEndIt())
        session.cancel();
}

bool AppDelegate::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() != QEvent::Quit || watched != QCoreApplication::instance())
        return QObject::eventFilter(watched, event);
    event->ignore(); // not yet
    if (sessionMayEndIt())
        quit();
    return true;
}

void AppDelegate::quit()
{
    if (std::exchange(m_isQuitting, true))
        return;
    // They may be what called us.
    if (m_menuBar)
        m_menuBar.release()->deleteLater();
    if (m_windows)
        m_windows.release()->deleteLater();
    Q_EMIT quitting();
    spawn(endInOrder());
}

QCoro::Task<> AppDelegate::endInOrder()
{
    try {
        co_await m_scope(m_services.meeting().finishForQuit());
    } catch (const Gone &) {
        throw;
    } catch (const std::exception &) {
        // The recording lies on the disk as far as it came; the next start offers it.
    }
    QCoreApplication::exit();
}

void AppDelegate::applicationWillTerminate()
{
    if (m_desktop)
        m_desktop->keys.uninstall();
    m_services.engineProcesses().terminateAll();
}

} // namespace orvane
