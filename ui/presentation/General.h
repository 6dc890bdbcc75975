#pragma once

#include "desktop/Autostart.h"

#include <QObject>
#include <QStringList>

namespace orvane {

class AppSettings;
class KeyTap;
class UpdateChecker;

/// What the general page of the settings shows beside the settings themselves. Main thread.
class General : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QString keyText READ keyText NOTIFY keyChanged)
    Q_PROPERTY(QStringList triggers READ triggers NOTIFY keyChanged)
    Q_PROPERTY(int triggerIndex READ triggerIndex WRITE setTriggerIndex NOTIFY keyChanged)
    Q_PROPERTY(QString modeText READ modeText NOTIFY modeChanged)
    Q_PROPERTY(QStringList modes READ modes NOTIFY modeChanged)
    Q_PROPERTY(int modeIndex READ modeIndex WRITE setModeIndex NOTIFY modeChanged)
    Q_PROPERTY(bool autostart READ autostart WRITE setAutostart NOTIFY autostartChanged)
    Q_PROPERTY(QString autostartText READ autostartText NOTIFY autostartChanged)
    Q_PROPERTY(QString versionText READ versionText CONSTANT)
    Q_PROPERTY(QString updateText READ updateText NOTIFY updateChanged)
    Q_PROPERTY(bool hasUpdate READ hasUpdate NOTIFY updateChanged)
    Q_PROPERTY(bool isChecking READ isChecking NOTIFY updateChanged)
    Q_PROPERTY(QString storageError READ storageError NOTIFY storageErrorChanged)

public:
    /// They outlive this.
    General(AppSettings &settings, const KeyTap &keys, UpdateChecker &updates, QObject *parent = nullptr);

    [[nodiscard]] QString keyText() const;
    [[nodiscard]] QStringList triggers() const;
    [[nodiscard]] int triggerIndex() const;
    void setTriggerIndex(int index);

    /// What the chosen mode does.
    [[nodiscard]] QString modeText() const;
    [[nodiscard]] QStringList modes() const;
    [[nodiscard]] int modeIndex() const;
    void setModeIndex(int index);

    [[nodiscard]] bool autostart() const { return m_autostart.isOn(); }
    void setAutostart(bool on) { m_autostart.set(on); }
    /// What it means, or why it could not be stored.
    [[nodiscard]] QString autostartText() const;

    [[nodiscard]] QString versionText() const;
    [[nodiscard]] QString updateText() const;
    [[nodiscard]] bool hasUpdate() const;
    /// Whether a check or a download runs.
    [[nodiscard]] bool isChecking() const;
    /// Checks, or offers what was found; the outcome is shown in a dialog.
    Q_INVOKABLE void checkForUpdates();

    /// Why changes of the settings are not stored; empty when they are.
    [[nodiscard]] QString storageError() const;

Q_SIGNALS:
    void keyChanged();
    void modeChanged();
    void autostartChanged();
    void updateChanged();
    void storageErrorChanged();

private:
    AppSettings &m_settings;
    const KeyTap &m_keys;
    UpdateChecker &m_updates;
    Autostart m_autostart;
};

} // namespace orvane
