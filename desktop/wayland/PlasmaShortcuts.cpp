#include "desktop/wayland/PlasmaShortcuts.h"

#include "base/Async.h"
#include "base/localization/Localization.h"
#include "desktop/BusCall.h"

#include <QDBusArgument>
#include <QDBusMetaType>
#include <QKeySequence>
#include <QRegularExpression>

#include <utility>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

const QString service = u"org.kde.kglobalaccel"_s;
const QString compositor = u"org.kde.KWin"_s;
const QString path = u"/kglobalaccel"_s;
const QString interface = u"org.kde.KGlobalAccel"_s;
const QString component = u"com.orvane.Orvane"_s;
const QString componentPath = u"/component/com_orvane_Orvane"_s;
const QString componentInterface = u"org.kde.kglobalaccel.Component"_s;

const QString tapAction = u"tap"_s;
const QString toggleAction = u"toggle"_s;
const QString cancelAction = u"cancel"_s;

/// How a key is set.
enum SetKey : uint {
    Present = 2,      ///< it is to be heard
    EvenIfChanged = 4 ///< whatever the user has set
};

constexpr int toggleKey = int(Qt::CTRL) | int(Qt::ALT) | int(Qt::Key_Space);
constexpr int endLimit = 300; // ms, for what is given back when the program ends

QString titleOf(const QString &action)
{
    if (action == cancelAction)
        return Localization::text(u"Отменить диктовку");
    return action == tapAction ? Localization::text(u"Начать или закончить диктовку: нажать дважды")
                               : Localization::text(u"Начать или закончить диктовку");
}

QStringList identityOf(const QString &action)
{
    return {component, action, u"Orvane"_s, titleOf(action)};
}

QDBusMessage request(const QString &method, const QVariantList &arguments)
{
    QDBusMessage message = QDBusMessage::createMethodCall(service, path, interface, method);
    message.setArguments(arguments);
    message.setAutoStartService(false);
    return message;
}

int keyOf(TriggerKey trigger)
{
    return trigger == TriggerKey::RightOption ? int(Qt::Key_Alt) : int(Qt::Key_Control);
}

QString nameOf(int key)
{
    if (key == int(Qt::Key_Control))
        return Localization::text(u"левый или правый Ctrl");
    if (key == int(Qt::Key_Alt))
        return Localization::text(u"левый или правый Alt");
    return QKeySequence(QKeyCombination::fromCombined(key)).toString(QKeySequence::NativeText);
}

} // namespace

PlasmaShortcuts::PlasmaShortcuts() : m_bus(QDBusConnection::sessionBus())
{
    qDBusRegisterMetaType<QList<int>>();
    if (!m_bus.isConnected())
        return;
    m_watcher.setConnection(m_bus);
    m_watcher.setWatchMode(QDBusServiceWatcher::WatchForOwnerChange);
    for (const QString &name : {service, compositor}) // one has its name before the other
        m_watcher.addWatchedService(name);
    connect(&m_watcher, &QDBusServiceWatcher::serviceOwnerChanged, this, [this] {
        m_isAsked = false;
        Q_EMIT restarted();
    });
}

PlasmaShortcuts::~PlasmaShortcuts()
{
    m_scope.end();
}

/// Of another compositor's session the service, which programs start, hears nothing.
QCoro::Task<bool> PlasmaShortcuts::isThere()
{
    if (!m_bus.isConnected())
        co_return false;
    const QString keys = co_await m_scope(BusCall::ownerOf(service, m_bus));
    const QString shown = co_await m_scope(BusCall::ownerOf(compositor, m_bus));
    co_return !keys.isEmpty() && keys == shown;
}

QCoro::Task<int> PlasmaShortcuts::majorVersion()
{
    const QDBusMessage answer = co_await m_scope(BusCall::answerTo(
        QDBusMessage::createMethodCall(compositor, u"/KWin"_s, compositor, u"supportInformation"_s), m_bus));
    static const QRegularExpression version(u"KWin version: (\\d+)"_s);
    co_return version.match(answer.arguments().value(0).toString()).captured(1).toInt();
}

QCoro::Task<ShortcutGiver::Answer> PlasmaShortcuts::ask(TriggerKey trigger, Occasion /*occasion*/)
{
    const bool isAnother = std::exchange(m_trigger, trigger) != trigger;
    if (m_isAsked && !isAnother)
        co_return Answer::Given;
    if (!co_await m_scope(isThere()))
        co_return Answer::Absent;
    // Before, a lone modifier is reported in every combination with it too.
    m_hearsModifiers = co_await m_scope(majorVersion()) >= 6;
    const bool wasAsked = std::exchange(m_isAsked, true);
    co_await m_scope(bind(wasAsked && isAnother));
    co_return m_isAsked ? Answer::Given : Answer::Absent;
}

QCoro::Task<> PlasmaShortcuts::bind(bool anotherTrigger)
{
    co_await m_scope(BusCall::answerTo(request(u"doRegister"_s, {identityOf(cancelAction)}), m_bus));
    co_await m_scope(settleEscape());
    listen(true);
    co_await m_scope(take(toggleAction, toggleKey, Present));
    if (m_hearsModifiers)
        co_await m_scope(
            take(tapAction, keyOf(m_trigger), anotherTrigger ? Present | EvenIfChanged : Present));
}

QCoro::Task<> PlasmaShortcuts::take(QString action, int key, uint how)
{
    const QStringList identity = identityOf(action);
    co_await m_scope(BusCall::answerTo(request(u"doRegister"_s, {identity}), m_bus));
    const QDBusMessage answer = co_await m_scope(BusCall::answerTo(
        request(u"setShortcut"_s, {identity, QVariant::fromValue(QList<int>{key}), how}), m_bus));
    auto keys = qdbus_cast<QList<int>>(answer.arguments().value(0));
    keys.removeAll(0);
    m_keys.insert(action, keys);
}

/// What is asked for while an earlier wish is on its way is asked for after it.
QCoro::Task<> PlasmaShortcuts::settleEscape()
{
    m_escapeIsStale = true;
    if (std::exchange(m_escapeIsBeingSettled, true))
        co_return;
    while (std::exchange(m_escapeIsStale, false)) {
        const QStringList identity = identityOf(cancelAction);
        const QDBusMessage wish =
            m_escapeIsTaken
                ? request(u"setShortcut"_s, {identity, QVariant::fromValue(QList<int>{Qt::Key_Escape}),
                                             Present | EvenIfChanged})
                : request(u"setInactive"_s, {identity});
        co_await m_scope(BusCall::answerTo(wish, m_bus));
    }
    m_escapeIsBeingSettled = false;
}

void PlasmaShortcuts::listen(bool listens)
{
    const auto change = [this, listens](const QString &where, const QString &what, const QString &signal,
                                        const char *slot) {
        if (listens)
            m_bus.connect(service, where, what, signal, this, slot);
        else
            m_bus.disconnect(service, where, what, signal, this, slot);
    };
    change(componentPath, componentInterface, u"globalShortcutPressed"_s, SLOT(pressed(QString, QString)));
    change(path, interface, u"yourShortcutsChanged"_s, SLOT(changed()));
    change(path, interface, u"yourShortcutGotChanged"_s, SLOT(changed())); // of older ones
}

void PlasmaShortcuts::release()
{
    listen(false);
    m_escapeIsTaken = false;
    if (!std::exchange(m_isAsked, false))
        return;
    for (const QString &action : {cancelAction, toggleAction, tapAction})
        m_bus.call(request(u"setInactive"_s, {identityOf(action)}), QDBus::Block, endLimit);
}

Shortcuts PlasmaShortcuts::shortcuts() const
{
    Shortcuts shortcuts{.giver = Shortcuts::Giver::Plasma};
    const auto give = [&](const QString &action, int wanted, QString &place) {
        if (const QList<int> keys = m_keys.value(action); !keys.isEmpty())
            place = nameOf(keys.constFirst());
        else
            shortcuts.taken.append(nameOf(wanted));
    };
    give(toggleAction, toggleKey, shortcuts.once);
    if (m_hearsModifiers)
        give(tapAction, keyOf(m_trigger), shortcuts.twice);
    return shortcuts;
}

void PlasmaShortcuts::setEscapeTaken(bool taken)
{
    if (std::exchange(m_escapeIsTaken, taken) != taken && m_isAsked)
        spawn(settleEscape());
}

void PlasmaShortcuts::pressed(const QString & /*component*/, const QString &action)
{
    if (action == tapAction)
        Q_EMIT tapped();
    else if (action == toggleAction)
        Q_EMIT toggled();
    else if (action == cancelAction && m_escapeIsTaken)
        Q_EMIT escaped();
}

/// The user has chosen other keys.
void PlasmaShortcuts::changed()
{
    const auto refresh = [](PlasmaShortcuts *self) -> QCoro::Task<> {
        co_await self->m_scope(self->bind(false));
        Q_EMIT self->shortcutsChanged();
    };
    if (m_isAsked)
        spawn(refresh(this));
}

} // namespace orvane
