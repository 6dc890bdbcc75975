#include "app/AppDelegate.h"

#include "app/Termination.h"
#include "base/Async.h"
#include "base/localization/Localization.h"
#include "desktop/KeyTap.h"
#include "ui/MenuBarController.h"

#include <QGuiApplication>
#include <QPointer>

#include <utility>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

std::chrono::nanoseconds uptime()
{
    return std::chrono::steady_clock::now().time_since_epoch();
}

QCoro::Task<> endInOrder(MeetingTranscriber *meeting)
{
    co_await meeting->finishForQuit();
    QCoreApplication::quit();
}

} // namespace

AppDelegate::AppDelegate(AppServices &services, Guidance *guidance, QObject *parent)
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
        showMenu(*dictation);
        installHotkey(*dictation);
    }
    MeetingTranscriber &meeting = m_services.meeting();
    m_control = std::make_unique<ControlService>(dictation, meeting);
    connect(m_control.get(), &ControlService::quitRequested, this, &AppDelegate::quit);
    connect(m_control.get(), &ControlService::activated, this, [this] {
        if (m_menuBar)
            m_menuBar->announce();
    });
    m_control->publish();

    m_services.engineProcesses().killStaleProcesses();
    m_services.history().watch();
    if (m_guidance)
        connect(&meeting, &MeetingTranscriber::leftoversChanged, this, &AppDelegate::offerLeftovers);
    spawn(meeting.findLeftovers());
    if (UpdateChecker *updates = m_services.updates())
        updates->start();
    m_services.telemetry().start();
}

void AppDelegate::installHotkey(DictationController &dictation)
{
    m_keyTap = KeyTap::forDisplay();
    connect(m_keyTap.get(), &KeyTap::triggerKeyChanged, this, [this, &dictation](TriggerKey key, bool down) {
        if (m_trigger.keyChanged(m_services.settings().dictationTrigger(), key, down))
            dictation.toggle();
    });
    connect(m_keyTap.get(), &KeyTap::togglePressed, &dictation, &DictationController::toggle);
    connect(m_keyTap.get(), &KeyTap::escapePressed, &dictation, &DictationController::cancel);
    connect(&dictation, &DictationController::stateChanged, m_keyTap.get(),
            [this, &dictation] { m_keyTap->setEscapeIntercepted(dictation.interceptsEscape()); });
    connect(m_keyTap.get(), &KeyTap::activeChanged, this,
            [this, &dictation] { dictation.setHotkeyActive(m_keyTap->isActive()); });
    connect(m_keyTap.get(), &KeyTap::grabIsMissingChanged, this,
            [this] { m_menuBar->setKeyIsTaken(m_keyTap->grabIsMissing()); });
    m_keyTap->install();
    dictation.setHotkeyActive(m_keyTap->isActive());
}

void AppDelegate::showMenu(DictationController &dictation)
{
    m_menuBar =
        std::make_unique<MenuBarController>(MenuBarController::Services{.settings = m_services.settings(),
                                                                        .models = m_services.models(),
                                                                        .dictation = dictation,
                                                                        .meeting = m_services.meeting(),
                                                                        .updates = *m_services.updates()});
    connect(m_menuBar.get(), &MenuBarController::quitRequested, this, &AppDelegate::quit);
    connect(m_menuBar.get(), &MenuBarController::keyCaptureHelpRequested, this,
            &AppDelegate::explainKeyCapture);
}

void AppDelegate::explainKeyCapture()
{
    m_guidance->guide(
        Localization::text(u"Клавиши диктовки здесь недоступны"),
        Localization::text(
            u"Этот рабочий стол не даёт программам слушать клавиши. Назначьте в его настройках сочетание "
            "клавиш для команды «orvane toggle»: первое нажатие начнёт диктовку, второе закончит."));
}

void AppDelegate::offerLeftovers()
{
    const MeetingTranscriber &meeting = m_services.meeting();
    if (m_isAsking || meeting.isRunning() || meeting.isTranscribing())
        return;
    for (const RecordedMeeting &leftover : meeting.leftovers()) {
        if (m_asked.contains(leftover.audioFileName))
            continue;
        m_asked.insert(leftover.audioFileName);
        m_isAsking = true;
        spawn(offerLeftover(leftover));
        return;
    }
}

QCoro::Task<> AppDelegate::offerLeftover(RecordedMeeting leftover)
{
    const QPointer<AppDelegate> alive(this);
    const bool accepted =
        co_await m_guidance->ask({.title = Localization::text(u"Запись совещания не расшифрована"),
                                  .text = MeetingRecordings::noticeOf(leftover),
                                  .yes = Localization::text(u"Расшифровать"),
                                  .no = Localization::text(u"Не сейчас")});
    if (!alive)
        co_return;
    m_isAsking = false;
    if (accepted)
        m_services.meeting().transcribeLeftover(leftover.audioFileName);
    else
        offerLeftovers();
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
    if (!std::exchange(m_isQuitting, true))
        spawn(endInOrder(&m_services.meeting()));
}

void AppDelegate::applicationWillTerminate()
{
    if (m_keyTap)
        m_keyTap->uninstall();
    m_services.engineProcesses().terminateAll();
}

} // namespace orvane
