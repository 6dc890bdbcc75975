#include "tests/support/AccessibleTree.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusReply>
#include <QDeadlineTimer>
#include <QProcess>
#include <QTest>

using namespace Qt::StringLiterals;

namespace orvane::test {

namespace {

constexpr int patience = 60'000; // ms
const QString accessible = u"org.a11y.atspi.Accessible"_s;
const QString textInterface = u"org.a11y.atspi.Text"_s;
const QString registry = u"org.a11y.atspi.Registry"_s;
const QString root = u"/org/a11y/atspi/accessible/root"_s;

/// Numbers of AT-SPI.
enum State { Active = 1, Checked = 4, Enabled = 8, Focusable = 11, Focused = 12, Showing = 25 };

bool has(quint64 states, State state)
{
    return (states >> state & 1) != 0;
}

QString addressOfBus(const QString &sessionBus)
{
    const QString name = u"a test's session bus"_s;
    QString address;
    {
        const QDBusConnection session = QDBusConnection::connectToBus(sessionBus, name);
        const QDBusReply<QString> reply = session.call(QDBusMessage::createMethodCall(
            u"org.a11y.Bus"_s, u"/org/a11y/bus"_s, u"org.a11y.Bus"_s, u"GetAddress"_s));
        if (!reply.isValid())
            qFatal("no accessibility bus: %s", qPrintable(reply.error().message()));
        address = reply.value();
    }
    QDBusConnection::disconnectFromBus(name);
    return address;
}

/// Lists of structures that begin with texts: those texts of each.
QList<QStringList> textsOf(const QVariant &answer, int count)
{
    QList<QStringList> lists;
    if (!answer.canConvert<QDBusArgument>())
        return lists;
    const auto list = answer.value<QDBusArgument>();
    for (list.beginArray(); !list.atEnd(); list.endStructure()) {
        list.beginStructure();
        QStringList texts;
        for (int i = 0; i < count; ++i) {
            const QVariant text = list.asVariant();
            texts.append(text.canConvert<QDBusObjectPath>() ? text.value<QDBusObjectPath>().path()
                                                            : text.toString());
        }
        lists.append(texts);
    }
    list.endArray();
    return lists;
}

} // namespace

bool AccessibleTree::Element::isActive() const
{
    return has(states, Active);
}

bool AccessibleTree::Element::isChecked() const
{
    return has(states, Checked);
}

bool AccessibleTree::Element::isEnabled() const
{
    return has(states, Enabled);
}

bool AccessibleTree::Element::isFocusable() const
{
    return has(states, Focusable);
}

bool AccessibleTree::Element::isFocused() const
{
    return has(states, Focused);
}

AccessibleTree::AccessibleTree(const QString &sessionBus)
    : m_bus(QDBusConnection::connectToBus(addressOfBus(sessionBus), u"a test's accessibility bus"_s))
{}

AccessibleTree::~AccessibleTree()
{
    QDBusConnection::disconnectFromBus(m_bus.name());
}

QVariant AccessibleTree::call(const Element &element, const QString &interface, const QString &method,
                              const QVariantList &arguments) const
{
    auto message = QDBusMessage::createMethodCall(element.owner, element.path, interface, method);
    message.setArguments(arguments);
    const QDBusMessage answer = m_bus.call(message);
    // What has gone meanwhile answers with an error.
    return answer.type() == QDBusMessage::ReplyMessage ? answer.arguments().value(0) : QVariant();
}

QVariant AccessibleTree::property(const Element &element, const QString &interface, const QString &name) const
{
    return call(element, u"org.freedesktop.DBus.Properties"_s, u"Get"_s, {interface, name})
        .value<QDBusVariant>()
        .variant();
}

bool AccessibleTree::visit(const Element &parent, const Visitor &visitor) const
{
    for (const QStringList &place : textsOf(call(parent, accessible, u"GetChildren"_s), 2)) {
        Element child{.owner = place.at(0), .path = place.at(1)};
        const auto states = qdbus_cast<QList<uint>>(call(child, accessible, u"GetState"_s));
        child.states = states.value(0) | quint64(states.value(1)) << 32;
        const bool isProgram = child.path == root;
        if (!isProgram && !has(child.states, Showing))
            continue;
        if (!isProgram) {
            child.role = Role(call(child, accessible, u"GetRole"_s).toUInt());
            child.name = property(child, accessible, u"Name"_s).toString();
            if (!visitor(child))
                return false;
        }
        if (!visit(child, visitor))
            return false;
    }
    return true;
}

QList<AccessibleTree::Element> AccessibleTree::shown() const
{
    QList<Element> elements;
    visit({.owner = registry, .path = root}, [&elements](const Element &element) {
        elements.append(element);
        return true;
    });
    return elements;
}

std::optional<AccessibleTree::Element>
AccessibleTree::first(const std::function<bool(const Element &)> &isMeant) const
{
    std::optional<Element> found;
    visit({.owner = registry, .path = root}, [&found, &isMeant](const Element &element) {
        if (isMeant(element))
            found = element;
        return !found;
    });
    return found;
}

std::optional<AccessibleTree::Element> AccessibleTree::find(Role role, const QString &name) const
{
    return first([&](const Element &element) { return element.role == role && element.name == name; });
}

bool AccessibleTree::is(Role role, const QString &name, bool (Element::*state)() const) const
{
    const std::optional<Element> element = find(role, name);
    return element && ((*element).*state)();
}

QString AccessibleTree::description(const Element &element) const
{
    return property(element, accessible, u"Description"_s).toString();
}

QString AccessibleTree::text(const Element &element) const
{
    const QVariant count = property(element, textInterface, u"CharacterCount"_s);
    return count.isValid() ? call(element, textInterface, u"GetText"_s, {0, count.toInt()}).toString()
                           : QString();
}

QString AccessibleTree::text(Role role, const QString &name) const
{
    const std::optional<Element> element = find(role, name);
    return element ? text(*element) : QString();
}

bool AccessibleTree::work(const QString &what, const std::function<std::optional<Element>()> &look,
                          const Visitor &deed) const
{
    for (const QDeadlineTimer end(patience); !end.hasExpired(); QTest::qWait(50)) {
        const std::optional<Element> element = look();
        if (element && element->isEnabled() && deed(*element))
            return true;
    }
    qWarning("%s could not be worked; there are:", qPrintable(what));
    for (const Element &element : shown())
        qWarning("  %u '%s' %s", uint(element.role), qPrintable(element.name), qPrintable(text(element)));
    return false;
}

bool AccessibleTree::work(Role role, const QString &name, const Visitor &deed) const
{
    return work(u"role %1 '%2'"_s.arg(uint(role)).arg(name), [&] { return find(role, name); }, deed);
}

bool AccessibleTree::press(const Element &element) const
{
    const QString interface = u"org.a11y.atspi.Action"_s;
    const QList<QStringList> actions = textsOf(call(element, interface, u"GetActions"_s), 3);
    for (qsizetype i = 0; i < actions.size(); ++i) {
        if (actions.at(i).constFirst() == u"Press"_s)
            return call(element, interface, u"DoAction"_s, {int(i)}).toBool();
    }
    return false;
}

bool AccessibleTree::press(Role role, const QString &name) const
{
    return work(role, name, [this](const Element &element) { return press(element); });
}

bool AccessibleTree::pressIn(const QString &listItem, Role role, const QString &name) const
{
    const auto look = [&]() -> std::optional<Element> {
        const std::optional<Element> item = find(Role::ListItem, listItem);
        std::optional<Element> found;
        const auto isMeant = [&](const Element &element) {
            if (element.role == role && element.name == name)
                found = element;
            return !found;
        };
        if (item)
            visit(*item, isMeant);
        return found;
    };
    return work(u"'%1' of '%2'"_s.arg(name, listItem), look,
                [this](const Element &element) { return press(element); });
}

bool AccessibleTree::focus(Role role, const QString &name) const
{
    return work(role, name, [this](const Element &element) {
        if (!element.isFocused())
            call(element, u"org.a11y.atspi.Component"_s, u"GrabFocus"_s);
        return element.isFocused();
    });
}

bool AccessibleTree::type(const QString &field, const QString &text) const
{
    return focus(Role::Text, field) && QProcess::execute(u"xdotool"_s, {u"key"_s, u"ctrl+a"_s}) == 0 &&
           QProcess::execute(u"xdotool"_s, {u"type"_s, u"--delay"_s, u"0"_s, text}) == 0 &&
           work(Role::Text, field, [&](const Element &element) { return this->text(element) == text; });
}

bool AccessibleTree::write(const QString &field, const QString &text) const
{
    return work(Role::Text, field, [&](const Element &element) {
        call(element, u"org.a11y.atspi.EditableText"_s, u"SetTextContents"_s, {text});
        return this->text(element) == text;
    });
}

} // namespace orvane::test
