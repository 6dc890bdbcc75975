#pragma once

#include "ui/windows/WindowsModule.h"

#include <QObject>
#include <QPointer>
#include <QWindow>

#include <functional>
#include <memory>

namespace orvane {

class AppSettings;
class Desk;
class DesktopAppearance;
class TextTable;
class UserDefaults;

/// The main window and that of the settings: each is made when it is first wanted and gone when it is closed.
/// Their scenes are in a module of its own that is loaded with the first. Main thread; needs a QApplication
/// that outlives this.
class WindowController : public QObject
{
    Q_OBJECT

public:
    struct Services
    {
        const AppSettings &settings;
        UserDefaults &defaults;
        /// Called once, with the first window.
        std::function<std::unique_ptr<Desk>()> makeDesk;
        /// Where the module "orvane-windows" lies.
        QString moduleFolder;
    };

    explicit WindowController(Services services, QObject *parent = nullptr);
    ~WindowController() override;

    /// Shows the window or brings it forward. The token is what another program, such as the desktop's
    /// launcher, gave for that; empty without one.
    void showMain(const QString &activationToken = {});
    /// With the page that was open last when none is named, see Desk::settingsPage().
    void showSettings(const QString &page = {}, const QString &activationToken = {});
    /// With files to transcribe.
    void openFiles(const QList<QUrl> &files, const QString &activationToken = {});

    /// Null while it is not there.
    [[nodiscard]] QWindow *mainWindow() const { return m_main.get(); }
    [[nodiscard]] QWindow *settingsWindow() const { return m_settingsWindow.get(); }

Q_SIGNALS:
    /// The main window has come onto the screen.
    void mainAppeared();
    void quitRequested();
    /// The windows could not be made: why, for the user.
    void failed(const QString &text);

private:
    [[nodiscard]] bool prepare();
    void make(std::unique_ptr<QWindow> &window, Windows::Which which);
    void close(std::unique_ptr<QWindow> &window);
    void restorePlace(QWindow &window) const;
    void rememberPlace(const QWindow &window);
    void showAppearance();

    const Services m_services;
    std::unique_ptr<TextTable> m_texts;
    std::unique_ptr<Desk> m_desk;
    std::unique_ptr<DesktopAppearance> m_appearance;
    std::unique_ptr<Windows> m_windows;
    std::unique_ptr<QWindow> m_main;
    std::unique_ptr<QWindow> m_settingsWindow;
};

} // namespace orvane
