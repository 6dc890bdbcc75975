#include "tests/support/FakePortal.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusVariant>

using namespace Qt::StringLiterals;

namespace orvane::test {

/// A key's identifier, and what there is to say of it.
struct DescribedKey
{
    QString id;
    QVariantMap about;

    friend QDBusArgument &operator<<(QDBusArgument &argument, const DescribedKey &key)
    {
        argument.beginStructure();
        argument << key.id << key.about;
        argument.endStructure();
        return argument;
    }
    friend const QDBusArgument &operator>>(const QDBusArgument &argument, DescribedKey &key)
    {
        argument.beginStructure();
        argument >> key.id >> key.about;
        argument.endStructure();
        return argument; // NOLINT(bugprone-return-const-ref-from-parameter): as Qt wants it
    }
};

namespace {

const QString service = u"org.freedesktop.portal.Desktop"_s;
const QString root = u"/org/freedesktop/portal/desktop"_s;
const QString shortcuts = u"org.freedesktop.portal.GlobalShortcuts"_s;
const QString connectionName = u"fake-portal"_s;

QString requestPath(const QDBusMessage &call, const QVariantMap &options)
{
    return u"%1/request/%2/%3"_s.arg(root, call.service().mid(1).replace(u'.', u'_'),
                                     options.value(u"handle_token"_s).toString());
}

} // namespace

FakePortal::FakePortal() : m_bus(QDBusConnection::connectToBus(QDBusConnection::SessionBus, connectionName))
{
    qDBusRegisterMetaType<DescribedKey>();
    qDBusRegisterMetaType<QList<DescribedKey>>();
    if (!m_bus.registerVirtualObject(root, this, QDBusConnection::SubPath) || !m_bus.registerService(service))
        qFatal("the portal does not come up");
}

FakePortal::~FakePortal()
{
    m_bus.unregisterService(service);
    QDBusConnection::disconnectFromBus(connectionName);
}

QString FakePortal::introspect(const QString & /*path*/) const
{
    return {};
}

bool FakePortal::handleMessage(const QDBusMessage &message, const QDBusConnection & /*connection*/)
{
    calls.append(message.member());
    const QVariantList arguments = message.arguments();
    if (message.member() == "Get"_L1) {
        const bool isRemoteDesktop = arguments.value(0).toString().endsWith("RemoteDesktop"_L1);
        const uint version = isRemoteDesktop ? remoteDesktopVersion : 1;
        m_bus.send(message.createReply(QVariant::fromValue(QDBusVariant(version))));
        return true;
    }
    if (message.member() == "CreateSession"_L1) {
        const auto options = qdbus_cast<QVariantMap>(arguments.value(0));
        m_session = root + u"/session/"_s + options.value(u"session_handle_token"_s).toString();
        respond(message, options, 0, {{u"session_handle"_s, m_session}});
        return true;
    }
    if (message.member() == "BindShortcuts"_L1) {
        bind(message);
        return true;
    }
    if (message.member() == "SelectDevices"_L1) {
        const auto options = qdbus_cast<QVariantMap>(arguments.value(1));
        shownToken = options.value(u"restore_token"_s).toString();
        respond(message, options, 0, {});
        return true;
    }
    if (message.member() == "Start"_L1) {
        startRemoteDesktop(message);
        return true;
    }
    if (message.member() == "NotifyKeyboardKeycode"_L1)
        pressedKeys.append(arguments.value(2).toString() + (arguments.value(3).toUInt() == 1 ? u'+' : u'-'));
    m_bus.send(message.createReply());
    return true;
}

/// Only the token that was given last is good.
void FakePortal::startRemoteDesktop(const QDBusMessage &call)
{
    const auto options = qdbus_cast<QVariantMap>(call.arguments().value(2));
    const bool isKnown = !shownToken.isEmpty() && shownToken == nextToken;
    if (!isKnown && user == User::IsSilent) {
        m_bus.send(call.createReply(QVariant::fromValue(QDBusObjectPath(requestPath(call, options)))));
        return;
    }
    if (!isKnown && user == User::Refuses) {
        respond(call, options, 1, {});
        return;
    }
    nextToken += u'+';
    respond(call, options, 0, {{u"devices"_s, 1U}, {u"restore_token"_s, nextToken}});
}

void FakePortal::bind(const QDBusMessage &call)
{
    const auto options = qdbus_cast<QVariantMap>(call.arguments().value(3));
    auto keys = qdbus_cast<QList<DescribedKey>>(call.arguments().value(1));
    for (DescribedKey &key : keys)
        key.about = {{u"trigger_description"_s, key.about.value(u"preferred_trigger"_s)}};
    const QVariantMap given = {{u"shortcuts"_s, QVariant::fromValue(keys)}};
    switch (user) {
    case User::Agrees:
        respond(call, options, 0, given);
        break;
    case User::AgreesButIsReportedToHaveFailed:
        respond(call, options, 2, given);
        break;
    case User::RefusesAndTheSessionEnds:
        closeSession();
        [[fallthrough]];
    case User::Refuses:
        respond(call, options, 1, {});
        break;
    case User::IsSilent:
        m_bus.send(call.createReply(QVariant::fromValue(QDBusObjectPath(requestPath(call, options)))));
        break;
    }
}

void FakePortal::respond(const QDBusMessage &call, const QVariantMap &options, uint code,
                         const QVariantMap &results)
{
    const QString path = requestPath(call, options);
    m_bus.send(call.createReply(QVariant::fromValue(QDBusObjectPath(path))));
    QDBusMessage response =
        QDBusMessage::createSignal(path, u"org.freedesktop.portal.Request"_s, u"Response"_s);
    response.setArguments({code, results});
    m_bus.send(response);
}

void FakePortal::activate(const QString &id)
{
    QDBusMessage signal = QDBusMessage::createSignal(root, shortcuts, u"Activated"_s);
    signal.setArguments({QVariant::fromValue(QDBusObjectPath(m_session)), id, qulonglong(0), QVariantMap()});
    m_bus.send(signal);
}

void FakePortal::changeTrigger(const QString &id, const QString &trigger)
{
    QDBusMessage signal = QDBusMessage::createSignal(root, shortcuts, u"ShortcutsChanged"_s);
    const QList<DescribedKey> keys = {{.id = id, .about = {{u"trigger_description"_s, trigger}}}};
    signal.setArguments({QVariant::fromValue(QDBusObjectPath(m_session)), QVariant::fromValue(keys)});
    m_bus.send(signal);
}

void FakePortal::closeSession()
{
    m_bus.send(QDBusMessage::createSignal(m_session, u"org.freedesktop.portal.Session"_s, u"Closed"_s));
}

} // namespace orvane::test
