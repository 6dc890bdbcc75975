#pragma once

#include "base/Scope.h"
#include "desktop/wayland/ShortcutGiver.h"

#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QList>
#include <QMap>

namespace orvane {

/// Keys of Plasma's compositor, by the service with which KDE's programs have theirs. They are in the user's
/// settings of keys, whose choice wins; Esc, which outlives the program there too, is given back first.
class PlasmaShortcuts final : public ShortcutGiver
{
    Q_OBJECT

public:
    PlasmaShortcuts();
    ~PlasmaShortcuts() override;
    Q_DISABLE_COPY_MOVE(PlasmaShortcuts)

    [[nodiscard]] QCoro::Task<Answer> ask(TriggerKey trigger, Occasion occasion) override;
    void release() override;
    [[nodiscard]] Shortcuts shortcuts() const override;
    [[nodiscard]] bool canTakeEscape() const override { return true; }
    void setEscapeTaken(bool taken) override;

private Q_SLOTS:
    void pressed(const QString &component, const QString &action);
    void changed();

private:
    [[nodiscard]] QCoro::Task<bool> isThere();
    [[nodiscard]] QCoro::Task<int> majorVersion();
    QCoro::Task<> bind(bool anotherTrigger);
    QCoro::Task<> take(QString action, int key, uint how);
    QCoro::Task<> settleEscape();
    void listen(bool listens);

    QDBusConnection m_bus;
    QDBusServiceWatcher m_watcher;
    TriggerKey m_trigger = TriggerKey::RightCommand;
    bool m_isAsked = false;
    bool m_hearsModifiers = false; // when nothing is pressed with them
    bool m_escapeIsTaken = false;
    bool m_escapeIsBeingSettled = false;
    bool m_escapeIsStale = false;
    QMap<QString, QList<int>> m_keys; // in force, by action
    Scope m_scope;
};

} // namespace orvane
