#include "desktop/SessionLock_linux.h"

#include <QCoreApplication>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>

#include <array>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

const QString login = u"org.freedesktop.login1"_s;
const QString loginSession = u"org.freedesktop.login1.Session"_s;
const QString properties = u"org.freedesktop.DBus.Properties"_s;
const QString lockedHint = u"LockedHint"_s;

/// The interfaces of screen savers; all of them have a signal ActiveChanged.
const std::array savers = {u"org.freedesktop.ScreenSaver"_s, u"org.gnome.ScreenSaver"_s,
                           u"org.mate.ScreenSaver"_s, u"org.cinnamon.ScreenSaver"_s,
                           u"org.xfce.ScreenSaver"_s};

/// Calls `answered` with what comes back; nothing when that is an error.
template <typename... Results, typename Answered>
void ask(const QDBusConnection &bus, const QDBusMessage &request, QObject *receiver, Answered answered)
{
    const auto *watcher = new QDBusPendingCallWatcher(bus.asyncCall(request), receiver);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, receiver,
                     [answered](QDBusPendingCallWatcher *finished) {
                         finished->deleteLater();
                         if (const QDBusPendingReply<Results...> reply = *finished; !reply.isError())
                             answered(reply.value());
                     });
}

} // namespace

std::unique_ptr<SessionLock> SessionLock::ofThisSession()
{
    const QDBusConnection session = QDBusConnection::sessionBus();
    const QDBusConnection system = QDBusConnection::systemBus();
    if (!session.isConnected() && !system.isConnected())
        return std::make_unique<SessionLock>();
    return std::make_unique<BusSessionLock>(session, system);
}

BusSessionLock::BusSessionLock(const QDBusConnection &session, const QDBusConnection &system)
{
    if (session.isConnected())
        watchSavers(session);
    if (system.isConnected())
        watchLogin(system);
}

void BusSessionLock::watchSavers(QDBusConnection session)
{
    m_savers.setConnection(session);
    m_savers.setWatchMode(QDBusServiceWatcher::WatchForUnregistration);
    // One that ends, or crashes, locks nothing any more.
    connect(&m_savers, &QDBusServiceWatcher::serviceUnregistered, this,
            [this](const QString &name) { m_activeSavers.remove(name); });
    for (const QString &saver : savers)
        session.connect({}, {}, saver, u"ActiveChanged"_s, this, SLOT(saverChanged(bool, QDBusMessage)));
}

void BusSessionLock::saverChanged(bool active, const QDBusMessage &message)
{
    const QString saver = message.service();
    if (active) {
        m_activeSavers.insert(saver);
        m_savers.addWatchedService(saver);
    } else {
        m_activeSavers.remove(saver);
        m_savers.removeWatchedService(saver);
    }
}

void BusSessionLock::watchLogin(QDBusConnection system)
{
    QDBusMessage whichSession = QDBusMessage::createMethodCall(
        login, u"/org/freedesktop/login1"_s, u"org.freedesktop.login1.Manager"_s, u"GetSessionByPID"_s);
    whichSession.setArguments({quint32(QCoreApplication::applicationPid())});
    ask<QDBusObjectPath>(system, whichSession, this, [this, system](const QDBusObjectPath &session) {
        QDBusConnection(system).connect(login, session.path(), properties, u"PropertiesChanged"_s, this,
                                        SLOT(propertiesChanged(QString, QVariantMap, QStringList)));
        QDBusMessage state = QDBusMessage::createMethodCall(login, session.path(), properties, u"Get"_s);
        state.setArguments({loginSession, lockedHint});
        ask<QDBusVariant>(system, state, this,
                          [this](const QDBusVariant &hint) { m_isHinted = hint.variant().toBool(); });
    });
}

void BusSessionLock::propertiesChanged(const QString & /*interface*/, const QVariantMap &changed,
                                       const QStringList & /*unknown*/)
{
    if (const auto hint = changed.constFind(lockedHint); hint != changed.cend())
        m_isHinted = hint->toBool();
}

} // namespace orvane
