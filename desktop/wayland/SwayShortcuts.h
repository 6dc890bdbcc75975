#pragma once

#include "base/Scope.h"
#include "desktop/wayland/ShortcutGiver.h"
#include "desktop/wayland/SwayConfig.h"
#include "desktop/wayland/SwayConnection.h"

#include <QHash>

namespace orvane {

/// Keys that sway, or what speaks its language, binds at run time. They last until its configuration is read
/// again and outlive the program, so that what an earlier one left of Esc is given back first.
class SwayShortcuts final : public ShortcutGiver
{
    Q_OBJECT

public:
    SwayShortcuts();
    ~SwayShortcuts() override;
    Q_DISABLE_COPY_MOVE(SwayShortcuts)

    [[nodiscard]] QCoro::Task<Answer> ask(TriggerKey trigger, Occasion occasion) override;
    void release() override;
    [[nodiscard]] Shortcuts shortcuts() const override;
    [[nodiscard]] bool canTakeEscape() const override;
    void setEscapeTaken(bool taken) override;

private:
    [[nodiscard]] QCoro::Task<bool> readConfiguration();
    void bind();
    QCoro::Task<> bindAgain();
    void settle();
    void giveBackInDefaultMode();
    [[nodiscard]] QHash<QString, QByteArray> wanted() const;
    void happened(const QString &event, const QJsonObject &what);

    SwayConnection m_sway;
    SwayConfig m_config;
    TriggerKey m_trigger = TriggerKey::RightCommand;
    bool m_isAsked = false;
    QString m_mode; // of sway's bindings
    bool m_escapeIsTaken = false;
    QHash<QString, QByteArray> m_bound; // commands by keys
    Scope m_scope;
};

} // namespace orvane
