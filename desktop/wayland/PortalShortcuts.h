#pragma once

#include "base/OneTimeEvent.h"
#include "base/Scope.h"
#include "desktop/wayland/PortalRequest.h"
#include "desktop/wayland/ShortcutGiver.h"
#include "settings/UserDefaults.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusServiceWatcher>

#include <memory>

namespace orvane {

/// Keys that the desktop's portal gives once the user has agreed. Whether they have refused is stored, so
/// that they are asked at one start only.
class PortalShortcuts final : public ShortcutGiver
{
    Q_OBJECT

public:
    /// The refusal is stored among the preferences in that file.
    explicit PortalShortcuts(const QString &preferences = UserDefaults::standardFile());
    ~PortalShortcuts() override;
    Q_DISABLE_COPY_MOVE(PortalShortcuts)

    [[nodiscard]] QCoro::Task<Answer> ask(TriggerKey trigger, Occasion occasion) override;
    void release() override;
    [[nodiscard]] Shortcuts shortcuts() const override { return m_shortcuts; }

private Q_SLOTS:
    void activated(const QDBusMessage &message);
    void changed(const QDBusMessage &message);
    void sessionClosed();
    void portalChanged(const QString &name, const QString &before, const QString &now);

private:
    [[nodiscard]] QCoro::Task<Answer> askPortal(TriggerKey trigger, Occasion occasion);
    [[nodiscard]] QCoro::Task<bool> isThere();
    [[nodiscard]] QCoro::Task<QString> newSession();
    [[nodiscard]] QCoro::Task<Answer> bind();
    void listen(bool listens);
    void publish(const QVariant &shortcuts);
    void forget();
    [[nodiscard]] UserDefaults &preferences();

    const QString m_preferencesFile;
    std::unique_ptr<UserDefaults> m_preferences;
    QDBusConnection m_bus; // one of our own: the toolkit's is known as another program's
    std::unique_ptr<QDBusServiceWatcher> m_watcher;
    std::shared_ptr<OneTimeEvent> m_answered;        // null while nobody asks
    Answer m_answer = Answer::Absent;                // the last one
    QString m_session;                               // its path; empty while there is none
    TriggerKey m_trigger = TriggerKey::RightCommand; // which the portal was asked for
    Shortcuts m_shortcuts;
    Scope m_scope;
};

} // namespace orvane
