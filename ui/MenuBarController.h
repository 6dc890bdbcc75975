#pragma once

#include "ui/MeetingMenu.h"
#include "ui/MeetingNotices.h"

#include <QMenu>
#include <QObject>
#include <QSystemTrayIcon>

namespace orvane {

class AppSettings;
class DictationController;
class KeyTap;
class MeetingTranscriber;
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
        MeetingTranscriber &meeting;
        UpdateChecker &updates;
        const KeyTap &keys;
    };

    explicit MenuBarController(Services services, QObject *parent = nullptr);

    /// Says something at once, wherever the user is, and for a few seconds.
    void notify(const QString &text);

    /// What the menu holds now.
    [[nodiscard]] QMenu &menu() { return m_menu; }

Q_SIGNALS:
    void mainWindowRequested();
    /// With the page of the models, or the one that was open last.
    void modelSettingsRequested();
    void settingsRequested();
    /// The user chose to end the program.
    void quitRequested();
    /// The user wants to know why there are no global keys and what to do.
    void keyCaptureHelpRequested();
    /// The user wants the desktop to give keys.
    void keySetUpRequested();
    void pasteConsentRequested();

private:
    void rebuild();
    void addDictation();
    void addKeyCapture();
    void addWindows();
    void addModels();
    void addTriggers();
    void addLanguages();
    void addModes();
    void addUpdates();
    void showState();
    [[nodiscard]] QString statusLine() const;
    [[nodiscard]] QString statusAtRest() const;

    Services m_services;
    MeetingMenu m_meeting;
    MeetingNotices m_meetingNotices;
    bool m_meetingEndedLast = false; // after whatever else went wrong
    QMenu m_menu;
    QSystemTrayIcon m_icon;
};

} // namespace orvane
