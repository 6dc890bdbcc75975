#pragma once

#include <QMenu>
#include <QObject>
#include <QSystemTrayIcon>

namespace orvane {

class AppSettings;
class DictationController;
class ModelManager;
class UpdateChecker;

/// The program's icon in the tray and its menu, which is made anew each time it opens. Main thread; needs
/// a QApplication. Where the desktop has no tray there is no icon, and it appears when a tray does.
class MenuBarController : public QObject
{
    Q_OBJECT

public:
    struct Services
    {
        AppSettings &settings;
        ModelManager &models;
        DictationController &dictation;
        UpdateChecker &updates;
    };

    explicit MenuBarController(Services services, QObject *parent = nullptr);

    /// Whether another program keeps a key that the dictation needs; the menu then says so.
    void setKeyIsTaken(bool taken);

    /// Says where the program is, to somebody who started it again.
    void announce();

    /// What the menu holds now.
    [[nodiscard]] QMenu &menu() { return m_menu; }

Q_SIGNALS:
    /// The user chose to end the program.
    void quitRequested();
    /// The user wants to know why there are no global keys and what to do.
    void keyCaptureHelpRequested();

private:
    void rebuild();
    void addDictation();
    void addKeyCapture();
    void addModels();
    void addTriggers();
    void addLanguages();
    void addModes();
    void addUpdates();
    void showState();
    [[nodiscard]] QString statusLine() const;

    Services m_services;
    bool m_keyIsTaken = false;
    QMenu m_menu;
    QSystemTrayIcon m_icon;
};

} // namespace orvane
