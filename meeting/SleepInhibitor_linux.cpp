#include "meeting/SleepInhibitor.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusUnixFileDescriptor>

using namespace Qt::StringLiterals;

namespace orvane {

/// The system stays awake until the descriptor that it gives is closed.
struct SleepInhibitor::Lock
{
    std::unique_ptr<QDBusPendingCallWatcher> request;
    QDBusUnixFileDescriptor descriptor;
};

SleepInhibitor::SleepInhibitor(const QString &reason) : m_lock(std::make_unique<Lock>())
{
    QDBusMessage inhibit =
        QDBusMessage::createMethodCall(u"org.freedesktop.login1"_s, u"/org/freedesktop/login1"_s,
                                       u"org.freedesktop.login1.Manager"_s, u"Inhibit"_s);
    inhibit << u"sleep:idle"_s << u"Orvane"_s << reason << u"block"_s;
    m_lock->request =
        std::make_unique<QDBusPendingCallWatcher>(QDBusConnection::systemBus().asyncCall(inhibit));
    QObject::connect(m_lock->request.get(), &QDBusPendingCallWatcher::finished, m_lock->request.get(),
                     [lock = m_lock.get()] {
                         const QDBusPendingReply<QDBusUnixFileDescriptor> reply = *lock->request;
                         if (reply.isValid()) // a system without this service just goes to sleep
                             lock->descriptor = reply.value();
                     });
}

SleepInhibitor::~SleepInhibitor() = default;

} // namespace orvane
