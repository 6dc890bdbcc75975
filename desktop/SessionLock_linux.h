#pragma once

#include "desktop/SessionLock.h"

#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QSet>
#include <QVariantMap>

class QDBusMessage;

namespace orvane {

/// What the login manager says of the session, and the screen savers of the desktops: either is enough, as
/// not every screen locker tells both.
class BusSessionLock final : public SessionLock
{
    Q_OBJECT

public:
    BusSessionLock(const QDBusConnection &session, const QDBusConnection &system);

    [[nodiscard]] bool isLocked() const override { return m_isHinted || !m_activeSavers.isEmpty(); }

private Q_SLOTS:
    void saverChanged(bool active, const QDBusMessage &message);
    void propertiesChanged(const QString &interface, const QVariantMap &changed, const QStringList &unknown);

private:
    void watchSavers(QDBusConnection session);
    void watchLogin(QDBusConnection system);

    QDBusServiceWatcher m_savers;
    QSet<QString> m_activeSavers; // their bus names
    bool m_isHinted = false;
};

} // namespace orvane
