#include "desktop/wayland/PortalRequest.h"

#include "desktop/BusCall.h"

#include <QDBusServiceWatcher>
#include <QDBusVariant>
#include <QDeadlineTimer>
#include <QUuid>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orvane {

QCoro::Task<> PortalRequest::introduce(QDBusConnection bus, std::chrono::milliseconds limit)
{
    QDBusMessage call = QDBusMessage::createMethodCall(
        service, path, u"org.freedesktop.host.portal.Registry"_s, u"Register"_s);
    call.setArguments({u"com.orvane.Orvane"_s, QVariantMap()});
    co_await BusCall::answerTo(call, bus, limit);
}

QCoro::Task<uint> PortalRequest::versionOf(QString interface, QDBusConnection bus,
                                           std::chrono::milliseconds limit)
{
    QDBusMessage call =
        QDBusMessage::createMethodCall(service, path, u"org.freedesktop.DBus.Properties"_s, u"Get"_s);
    call.setArguments({interface, u"version"_s});
    const QDBusMessage answer = co_await BusCall::answerTo(call, bus, limit);
    if (answer.type() != QDBusMessage::ReplyMessage)
        co_return 0U;
    co_return answer.arguments().value(0).value<QDBusVariant>().variant().toUInt();
}

QCoro::Task<std::optional<PortalRequest::Response>>
PortalRequest::ask(QString interface, QString method, QVariantList arguments, QVariantMap options,
                   QDBusConnection bus, std::chrono::milliseconds limit)
{
    const QString token = u"orvane"_s + QUuid::createUuid().toString(QUuid::Id128);
    const std::unique_ptr<PortalRequest> request(new PortalRequest(bus, token));
    options.insert(u"handle_token"_s, token);
    QDBusMessage call = QDBusMessage::createMethodCall(service, path, interface, method);
    call.setArguments(arguments << options);
    const QDeadlineTimer end(limit);
    const QDBusMessage answer = co_await BusCall::answerTo(
        call, bus, std::min<std::chrono::milliseconds>(limit, BusCall::usualLimit));
    if (answer.type() != QDBusMessage::ReplyMessage)
        co_return std::nullopt;
    co_await request->m_ended->waitFor(std::chrono::milliseconds(end.remainingTime()));
    co_return std::optional(request->m_response);
}

PortalRequest::PortalRequest(const QDBusConnection &bus, const QString &token)
{
    const QString sender = bus.baseService().mid(1).replace(u'.', u'_');
    QDBusConnection(bus).connect(service, path + u"/request/"_s + sender + u'/' + token,
                                 u"org.freedesktop.portal.Request"_s, u"Response"_s, this,
                                 SLOT(responded(uint, QVariantMap)));
    auto *watcher = new QDBusServiceWatcher(service, bus, QDBusServiceWatcher::WatchForUnregistration, this);
    connect(watcher, &QDBusServiceWatcher::serviceUnregistered, this, [this] { m_ended->happen(); });
}

void PortalRequest::responded(uint code, const QVariantMap &results)
{
    m_response = {.code = code, .results = results};
    m_ended->happen();
}

} // namespace orvane
