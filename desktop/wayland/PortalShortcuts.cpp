#include "desktop/wayland/PortalShortcuts.h"

#include "base/localization/Localization.h"
#include "desktop/BusCall.h"
#include "desktop/wayland/GnomeAccelerator.h"
#include "settings/TriggerName.h"

#include <QDBusArgument>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QUuid>

#include <chrono>
#include <utility>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orvane {

/// As the portal passes it: an identifier, and what there is to say of it.
struct PortalShortcut
{
    QString id;
    QVariantMap about;

    friend QDBusArgument &operator<<(QDBusArgument &argument, const PortalShortcut &shortcut)
    {
        argument.beginStructure();
        argument << shortcut.id << shortcut.about;
        argument.endStructure();
        return argument;
    }
    friend const QDBusArgument &operator>>(const QDBusArgument &argument, PortalShortcut &shortcut)
    {
        argument.beginStructure();
        argument >> shortcut.id >> shortcut.about;
        argument.endStructure();
        return argument; // NOLINT(bugprone-return-const-ref-from-parameter): as Qt wants it
    }
};

namespace {

const QString interface = u"org.freedesktop.portal.GlobalShortcuts"_s;
const QString sessionInterface = u"org.freedesktop.portal.Session"_s;
const QString connectionName = u"orvane-shortcuts"_s;
const QString refusalKey = u"desktopKeysRefused"_s;
const QString tapId = u"tap"_s;
const QString toggleId = u"toggle"_s;
constexpr auto sessionLimit = 10s;
constexpr auto userLimit = 5min;

QVariant wishes(TriggerKey trigger)
{
    const bool isAlt = trigger == TriggerKey::RightOption;
    const QList<PortalShortcut> shortcuts = {
        {.id = toggleId,
         .about = {{u"description"_s, Localization::text(u"Начать или закончить диктовку")},
                   {u"preferred_trigger"_s, u"CTRL+ALT+space"_s}}},
        {.id = tapId,
         .about = {{u"description"_s, Localization::text(u"Начать или закончить диктовку: нажать дважды")},
                   {u"preferred_trigger"_s, isAlt ? u"Alt_R"_s : u"Control_R"_s}}}};
    return QVariant::fromValue(shortcuts);
}

} // namespace

PortalShortcuts::PortalShortcuts(const QString &preferences)
    : m_preferencesFile(preferences),
      m_bus(connectionName)
{
    qDBusRegisterMetaType<PortalShortcut>();
    qDBusRegisterMetaType<QList<PortalShortcut>>();
}

PortalShortcuts::~PortalShortcuts()
{
    m_scope.end();
    m_watcher.reset();
    if (m_bus.isConnected())
        QDBusConnection::disconnectFromBus(connectionName);
}

QCoro::Task<ShortcutGiver::Answer> PortalShortcuts::ask(TriggerKey trigger, Occasion occasion)
{
    if (const std::shared_ptr<OneTimeEvent> answered = m_answered) {
        co_await m_scope(answered->wait());
        co_return Answer(m_answer);
    }
    if (!m_session.isEmpty())
        co_return Answer::Given; // which keys they are is the user's choice
    m_answered = OneTimeEvent::create();
    m_answer = co_await m_scope(askPortal(trigger, occasion));
    if (m_answer != Answer::Given)
        release();
    std::exchange(m_answered, nullptr)->happen();
    co_return Answer(m_answer);
}

QCoro::Task<ShortcutGiver::Answer> PortalShortcuts::askPortal(TriggerKey trigger, Occasion occasion)
{
    if (!co_await m_scope(isThere()))
        co_return Answer::Absent;
    if (occasion == Occasion::Start && preferences().boolean(refusalKey).value_or(false))
        co_return Answer::Refused;
    m_session = co_await m_scope(newSession());
    if (m_session.isEmpty())
        co_return Answer::Absent;
    m_trigger = trigger;
    co_return co_await m_scope(bind());
}

QCoro::Task<bool> PortalShortcuts::isThere()
{
    // Plasma has a way of its own, and its portal opens the settings at every start.
    if (qEnvironmentVariable("XDG_CURRENT_DESKTOP").contains("KDE"_L1, Qt::CaseInsensitive))
        co_return false;
    if (!m_watcher) {
        m_bus = QDBusConnection::connectToBus(QDBusConnection::SessionBus, connectionName);
        m_watcher = std::make_unique<QDBusServiceWatcher>(PortalRequest::service, m_bus,
                                                          QDBusServiceWatcher::WatchForOwnerChange);
        connect(m_watcher.get(), &QDBusServiceWatcher::serviceOwnerChanged, this,
                &PortalShortcuts::portalChanged);
    }
    if (!m_bus.isConnected())
        co_return false;
    co_await m_scope(PortalRequest::introduce(m_bus, PortalRequest::startLimit));
    co_return co_await m_scope(PortalRequest::versionOf(interface, m_bus, PortalRequest::startLimit)) > 0;
}

QCoro::Task<QString> PortalShortcuts::newSession()
{
    const QVariantMap options = {
        {u"session_handle_token"_s, u"orvane"_s + QUuid::createUuid().toString(QUuid::Id128)}};
    const auto response =
        co_await m_scope(PortalRequest::ask(interface, u"CreateSession"_s, {}, options, m_bus, sessionLimit));
    const QVariant handle = response ? response->results.value(u"session_handle"_s) : QVariant();
    co_return handle.canConvert<QDBusObjectPath>() ? handle.value<QDBusObjectPath>().path()
                                                   : handle.toString();
}

QCoro::Task<ShortcutGiver::Answer> PortalShortcuts::bind()
{
    listen(true);
    const QVariantList arguments = {QVariant::fromValue(QDBusObjectPath(m_session)), wishes(m_trigger),
                                    QString()};
    const auto response =
        co_await m_scope(PortalRequest::ask(interface, u"BindShortcuts"_s, arguments, {}, m_bus, userLimit));
    if (!response)
        co_return Answer::Absent;
    publish(response->results.value(u"shortcuts"_s));
    const bool isGiven = !m_shortcuts.once.isEmpty() || !m_shortcuts.twice.isEmpty();
    const bool isRefused = !isGiven && response->code == 1;
    if (isGiven || isRefused)
        preferences().set(refusalKey, isRefused);
    if (isRefused)
        co_return Answer::Refused;
    co_return isGiven && !m_session.isEmpty() ? Answer::Given : Answer::Absent;
}

void PortalShortcuts::release()
{
    if (m_session.isEmpty())
        return;
    QDBusMessage close =
        QDBusMessage::createMethodCall(PortalRequest::service, m_session, sessionInterface, u"Close"_s);
    close.setAutoStartService(false);
    m_bus.send(close);
    forget();
}

void PortalShortcuts::forget()
{
    listen(false);
    m_session.clear();
}

void PortalShortcuts::listen(bool listens)
{
    const auto change = [this, listens](const QString &path, const QString &what, const QString &signal,
                                        const char *slot) {
        if (listens)
            m_bus.connect(PortalRequest::service, path, what, signal, this, slot);
        else
            m_bus.disconnect(PortalRequest::service, path, what, signal, this, slot);
    };
    change(PortalRequest::path, interface, u"Activated"_s, SLOT(activated(QDBusMessage)));
    change(PortalRequest::path, interface, u"ShortcutsChanged"_s, SLOT(changed(QDBusMessage)));
    change(m_session, sessionInterface, u"Closed"_s, SLOT(sessionClosed()));
}

/// The portal names the keys in its own words, and sometimes not at all.
void PortalShortcuts::publish(const QVariant &shortcuts)
{
    m_shortcuts = {.giver = Shortcuts::Giver::Portal};
    for (const PortalShortcut &shortcut : qdbus_cast<QList<PortalShortcut>>(shortcuts)) {
        const QString said =
            GnomeAccelerator::nameIn(shortcut.about.value(u"trigger_description"_s).toString());
        if (shortcut.id == tapId)
            m_shortcuts.twice = said.isEmpty() ? triggerName(m_trigger).toString() : said;
        else if (shortcut.id == toggleId)
            m_shortcuts.once = said.isEmpty() ? u"Ctrl+Alt+Space"_s : said;
    }
}

void PortalShortcuts::activated(const QDBusMessage &message)
{
    const QVariantList arguments = message.arguments();
    if (arguments.value(0).value<QDBusObjectPath>().path() != m_session)
        return;
    if (arguments.value(1) == tapId)
        Q_EMIT tapped();
    else if (arguments.value(1) == toggleId)
        Q_EMIT toggled();
}

void PortalShortcuts::changed(const QDBusMessage &message)
{
    const QVariantList arguments = message.arguments();
    if (arguments.value(0).value<QDBusObjectPath>().path() != m_session)
        return;
    publish(arguments.value(1));
    Q_EMIT shortcutsChanged();
}

/// The portal of whoever is waiting for its answer: they notice it themselves, and one that ends at every
/// question is not asked for ever.
void PortalShortcuts::portalChanged(const QString & /*name*/, const QString & /*before*/, const QString &now)
{
    if (m_answered)
        return;
    if (!m_session.isEmpty())
        sessionClosed();
    else if (!now.isEmpty())
        Q_EMIT restarted();
}

/// Also when the portal has ended, with all its sessions: it is asked for a new one, which starts it. Some
/// portals close the session of whom the user refuses, before they say so.
void PortalShortcuts::sessionClosed()
{
    if (m_session.isEmpty())
        return;
    forget();
    if (!m_answered)
        Q_EMIT restarted();
}

UserDefaults &PortalShortcuts::preferences()
{
    if (!m_preferences)
        m_preferences = std::make_unique<UserDefaults>(m_preferencesFile);
    return *m_preferences;
}

} // namespace orvane
