#include "audio/MicrophoneAccess.h"

#include "base/OneTimeEvent.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

#include <chrono>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orvane {

namespace {

constexpr auto answerLimit = 1s;

} // namespace

// No portal can be asked for a microphone by the program that wants it: the sound server asks, and remembers
// the user's answer here. What is not decided yet it will ask about when the recording begins.
QCoro::Task<bool> requestMicrophone(std::stop_token stop)
{
    const QString sandboxedName = qEnvironmentVariable("FLATPAK_ID");
    if (sandboxedName.isEmpty())
        co_return true;
    QDBusMessage lookUp = QDBusMessage::createMethodCall(
        u"org.freedesktop.impl.portal.PermissionStore"_s, u"/org/freedesktop/impl/portal/PermissionStore"_s,
        u"org.freedesktop.impl.portal.PermissionStore"_s, u"GetPermission"_s);
    lookUp << u"devices"_s << u"microphone"_s << sandboxedName;
    const auto answered = OneTimeEvent::create();
    const QDBusPendingCallWatcher watcher(QDBusConnection::sessionBus().asyncCall(lookUp));
    QObject::connect(&watcher, &QDBusPendingCallWatcher::finished, &watcher,
                     [answered] { answered->happen(); });
    static_cast<void>(co_await answered->waitFor(answerLimit, stop));
    const QDBusPendingReply<QStringList> answer = watcher;
    co_return !answer.isFinished() || answer.isError() || answer.value().value(0) != u"no"_s;
}

} // namespace orvane
