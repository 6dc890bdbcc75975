#pragma once

#include "app/control/ControlService.h"
#include "app/services/AppServices.h"
#include "dictation/DictationTrigger.h"
#include "dictation/Guidance.h"

#include <QElapsedTimer>
#include <QObject>
#include <QSessionManager>
#include <QSet>

#include <memory>

namespace orvane {

class KeyTap;
class MenuBarController;

/// The application's life between its start and its end: the keys and the menu that lead to the services, and
/// who may end the program when.
class AppDelegate : public QObject
{
    Q_OBJECT

public:
    /// Without a display there is no one to guide.
    AppDelegate(AppServices &services, Guidance *guidance, QObject *parent = nullptr);
    ~AppDelegate() override;

    /// Once, when the event loop begins: ends the engines that a crashed run left behind, looks for the
    /// recordings it left, listens to keys and to the command line, and begins with update checks and device
    /// reports.
    void applicationDidFinishLaunching();

    /// Ends the program in order, for a user or a signal: a recording in progress is completed first.
    void quit();

    /// Once, when the program is about to end: asks every engine to end, without waiting.
    void applicationWillTerminate();

private:
    void installHotkey(DictationController &dictation);
    void showMenu(DictationController &dictation);
    void explainKeyCapture();
    /// Asks once about each recording that an earlier run left behind.
    void offerLeftovers();
    QCoro::Task<> offerLeftover(RecordedMeeting leftover);
    void answerSession(QSessionManager &session);

    AppServices &m_services;
    Guidance *const m_guidance;
    QElapsedTimer m_sinceLaunch;
    bool m_isQuitting = false;
    bool m_isAsking = false;
    QSet<QString> m_asked;
    DictationTrigger m_trigger;
    std::unique_ptr<KeyTap> m_keyTap;
    std::unique_ptr<MenuBarController> m_menuBar;
    std::unique_ptr<ControlService> m_control;
};

} // namespace orvane
