#pragma once

#include <QDBusConnection>
#include <QDBusVirtualObject>
#include <QStringList>

#include <optional>

namespace orvane::test {

/// A desktop's portal that gives global keys and lets programs press keys, on the session bus of the
/// environment. In the place of the user it answers at once.
class FakePortal : public QDBusVirtualObject
{
    Q_OBJECT

public:
    enum class User { Agrees, AgreesButIsReportedToHaveFailed, Refuses, RefusesAndTheSessionEnds, IsSilent };

    FakePortal();
    ~FakePortal() override;

    /// What the user says to the next request.
    User user = User::Agrees;
    /// The methods called, in order.
    QStringList calls;
    /// Of what presses keys.
    uint remoteDesktopVersion = 2;
    /// What a program showed so that the user need not be asked, and what it is given for the next time.
    QString shownToken;
    QString nextToken;
    /// Keys pressed and let go of, as "42+" and "42-".
    QStringList pressedKeys;
    /// Presses a key for the session that was made last.
    void activate(const QString &id);
    /// Tells that the user has chosen another key.
    void changeTrigger(const QString &id, const QString &trigger);
    /// Ends that session.
    void closeSession();

    [[nodiscard]] QString introspect(const QString &path) const override;
    [[nodiscard]] bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override;

private:
    void respond(const QDBusMessage &call, const QVariantMap &options, uint code, const QVariantMap &results);
    void bind(const QDBusMessage &call);
    void startRemoteDesktop(const QDBusMessage &call);

    QDBusConnection m_bus;
    QString m_session;
};

} // namespace orvane::test
