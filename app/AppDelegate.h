#pragma once

#include "app/services/AppServices.h"
#include "dictation/DictationTrigger.h"

#include <QElapsedTimer>
#include <QObject>
#include <QSessionManager>
#include <QUrl>

#include <memory>
#include <optional>

namespace orvane {

class ControlService;
class FileChooser;
class KeyTap;
class MenuBarController;
class SessionLock;
class WindowController;

/// The application's life between its start and its end: the keys, the menu and the requests that lead to the
/// services, and who may end the program when.
class AppDelegate : public QObject
{
    Q_OBJECT

public:
    /// What the application hears and shows on a display. Outlives the delegate.
    struct Desktop
    {
        Guidance &guidance;
        KeyTap &keys;
        const SessionLock &lock;
        FileChooser &files;
    };

    /// Requests are served from now on. The references outlive this; `desktop` is none without a display.
    AppDelegate(AppServices &services, ControlService &control, const std::optional<Desktop> &desktop,
                QObject *parent = nullptr);
    ~AppDelegate() override;

    /// Once, when the event loop begins: ends the engines that a crashed run left behind, looks for the
    /// recordings it left, listens to keys, and begins with update checks and device reports.
    void applicationDidFinishLaunching();

    /// Ends the program in order, for a user or a signal: a recording in progress is completed first. Nobody
    /// can object any more.
    void quit();

    /// Once, when the program is about to end: asks every engine to end, without waiting.
    void applicationWillTerminate();

    /// Shows the main window, with files to transcribe, if there is a display.
    void open(const QList<QUrl> &files);

    /// Says something where the user sees it, if there is a display.
    void notify(const QString &text);

Q_SIGNALS:
    /// The program has begun to end.
    void quitting();

protected:
    /// Leads what Qt takes for the end of the program, such as the session manager's order, to quit().
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void listenToKeys(DictationController &dictation);
    void triggerKeyChanged(TriggerKey key, bool down);
    void showMenu(DictationController &dictation);
    void prepareWindows();
    QCoro::Task<> reopen(QList<QUrl> files, QString token);
    void explainKeyCapture();
    [[nodiscard]] QCoro::Task<> askForPaste();
    QCoro::Task<> findLeftovers();
    QCoro::Task<> endInOrder();
    void answerSession(QSessionManager &session);
    [[nodiscard]] bool sessionMayEndIt() const;

    AppServices &m_services;
    const std::unique_ptr<const Desktop> m_desktop; ///< null without a display
    QElapsedTimer m_sinceLaunch;
    bool m_isQuitting = false;
    DictationTrigger m_trigger;
    std::unique_ptr<MenuBarController> m_menuBar;
    std::unique_ptr<WindowController> m_windows;
    Scope m_scope;
};

} // namespace orvane
