#include "app/AppDelegate.h"

#include "app/Termination.h"
#include "app/settings/Localization.h"
#include "dictation/KeyTap.h"
#include "ui/MenuBarController.h"

#include <QGuiApplication>
#include <QSessionManager>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

std::chrono::nanoseconds uptime()
{
    return std::chrono::steady_clock::now().time_since_epoch();
}

KeyTap::TriggerKey keyNamed(const QString &trigger)
{
    return trigger == "ropt"_L1 ? KeyTap::TriggerKey::RightOption : KeyTap::TriggerKey::RightCommand;
}

} // namespace

AppDelegate::AppDelegate(AppServices &services, GuidancePresenter *guidance, QObject *parent)
    : QObject(parent),
      m_services(services),
      m_guidance(guidance),
      m_trigger(uptime)
{
    m_sinceLaunch.start();
    if (auto *application = qobject_cast<QGuiApplication *>(QCoreApplication::instance())) {
        connect(application, &QGuiApplication::commitDataRequest, this, &AppDelegate::answerSession);
        connect(application, &QGuiApplication::saveStateRequest, this, [](QSessionManager &session) {
            session.setRestartHint(
                QSessionManager::RestartNever); // autostart begins us anew, without windows
        });
    }
}

AppDelegate::~AppDelegate() = default;

void AppDelegate::applicationDidFinishLaunching()
{
    DictationController *dictation = m_services.dictation();
    if (dictation) {
        installHotkey(*dictation);
        showMenu(*dictation);
    }
    m_control = std::make_unique<ControlService>(dictation);
    connect(m_control.get(), &ControlService::quitRequested, this, &AppDelegate::quit);
    connect(m_control.get(), &ControlService::activated, this, [this] {
        if (m_menuBar)
            m_menuBar->announce();
    });
    m_control->publish();

    m_services.engineProcesses().killStaleProcesses();
    m_services.history().watch();
    if (UpdateChecker *updates = m_services.updates())
        updates->start();
    m_services.telemetry().pingIfEnabled();
}

void AppDelegate::installHotkey(DictationController &dictation)
{
    m_keyTap = KeyTap::forDisplay();
    connect(m_keyTap.get(), &KeyTap::triggerKeyChanged, this,
            [this, &dictation](KeyTap::TriggerKey key, bool down) {
                if (m_trigger.keyChanged(keyNamed(m_services.settings().dictationTrigger()), key, down))
                    dictation.toggle();
            });
    connect(m_keyTap.get(), &KeyTap::togglePressed, &dictation, &DictationController::toggle);
    connect(m_keyTap.get(), &KeyTap::escapePressed, &dictation, &DictationController::cancel);
    connect(&dictation, &DictationController::stateChanged, m_keyTap.get(),
            [this, &dictation] { m_keyTap->setEscapeIntercepted(dictation.interceptsEscape()); });
    connect(m_keyTap.get(), &KeyTap::activeChanged, this, [this, &dictation] {
        dictation.setHotkeyActive(m_keyTap->isActive());
        if (m_menuBar)
            m_menuBar->setKeyIsTaken(m_keyTap->grabIsMissing());
    });
    m_keyTap->install();
    dictation.setHotkeyActive(m_keyTap->isActive());
}

void AppDelegate::showMenu(DictationController &dictation)
{
    m_menuBar =
        std::make_unique<MenuBarController>(MenuBarController::Services{.settings = m_services.settings(),
                                                                        .models = m_services.models(),
                                                                        .dictation = dictation,
                                                                        .updates = *m_services.updates()});
    m_menuBar->setKeyIsTaken(m_keyTap->grabIsMissing());
    connect(m_menuBar.get(), &MenuBarController::quitRequested, this, &AppDelegate::quit);
    connect(m_menuBar.get(), &MenuBarController::keyCaptureHelpRequested, this,
            &AppDelegate::explainKeyCapture);
}

void AppDelegate::explainKeyCapture()
{
    m_guidance->guide(
        Localization::text(u"Клавиши диктовки здесь недоступны"_s),
        Localization::text(
            u"Этот рабочий стол не даёт программам слушать клавиши. Назначьте в его настройках сочетание "
            "клавиш для команды «orvane toggle»: первое нажатие начнёт диктовку, второе закончит."_s));
}

void AppDelegate::answerSession(QSessionManager &session)
{
    session.setRestartHint(QSessionManager::RestartNever);
    const std::chrono::nanoseconds sinceLaunch(m_sinceLaunch.nsecsElapsed());
    if (!Termination::isHonoured(Termination::Source::Session, sinceLaunch))
        session.cancel();
}

void AppDelegate::quit()
{
    QCoreApplication::quit();
}

void AppDelegate::applicationWillTerminate()
{
    if (m_keyTap)
        m_keyTap->uninstall();
    m_services.engineProcesses().terminateAll();
}

} // namespace orvane
