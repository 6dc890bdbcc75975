#include "desktop/BusCall.h"

#include "base/OneTimeEvent.h"

#include <QDBusPendingCallWatcher>

#include <memory>

using namespace Qt::StringLiterals;

namespace orvane::BusCall {

QCoro::Task<QDBusMessage> answerTo(QDBusMessage request, QDBusConnection bus, std::chrono::milliseconds limit)
{
    const QDBusPendingCallWatcher watcher(bus.asyncCall(request, int(limit.count())));
    const std::shared_ptr<OneTimeEvent> answered = OneTimeEvent::create();
    QObject::connect(&watcher, &QDBusPendingCallWatcher::finished, [answered] { answered->happen(); });
    if (!watcher.isFinished())
        co_await answered->wait();
    co_return watcher.reply();
}

QCoro::Task<QString> ownerOf(QString name, QDBusConnection bus)
{
    QDBusMessage request = QDBusMessage::createMethodCall(u"org.freedesktop.DBus"_s, u"/"_s,
                                                          u"org.freedesktop.DBus"_s, u"GetNameOwner"_s);
    request.setArguments({name});
    const QDBusMessage answer = co_await answerTo(request, bus);
    co_return answer.type() == QDBusMessage::ReplyMessage ? answer.arguments().value(0).toString()
                                                          : QString();
}

} // namespace orvane::BusCall
