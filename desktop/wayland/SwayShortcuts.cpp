#include "desktop/wayland/SwayShortcuts.h"

#include "base/Async.h"
#include "settings/TriggerName.h"

#include <QJsonDocument>

#include <utility>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

using Request = SwayConnection::Request;

const QString toggleKeys = u"Ctrl+Mod1+space"_s;
const QString defaultMode = u"default"_s;
const QString escapeKeys = u"Escape"_s;
const QByteArray tapCommand = "nop orvane-tap";
const QByteArray toggleCommand = "nop orvane-toggle";
const QByteArray escapeCommand = "nop orvane-escape";

/// Of a modifier, sway reports the release when nothing else was pressed meanwhile.
QStringList keysOf(TriggerKey trigger)
{
    if (trigger == TriggerKey::RightOption)
        return {u"--release Alt_R"_s, u"--release ISO_Level3_Shift"_s};
    return {u"--release Control_R"_s};
}

QByteArray unbinding(const QString &keys)
{
    return "unbindsym " + keys.toLatin1();
}

} // namespace

SwayShortcuts::SwayShortcuts() : m_mode(defaultMode)
{
    connect(&m_sway, &SwayConnection::happened, this, &SwayShortcuts::happened);
    connect(&m_sway, &SwayConnection::closed, this, [this] {
        if (std::exchange(m_isAsked, false))
            Q_EMIT restarted();
    });
}

SwayShortcuts::~SwayShortcuts()
{
    m_scope.end();
}

QCoro::Task<ShortcutGiver::Answer> SwayShortcuts::ask(TriggerKey trigger, Occasion /*occasion*/)
{
    m_trigger = trigger;
    if (m_isAsked) {
        settle();
        co_return Answer::Given;
    }
    const QString path = qEnvironmentVariable("SWAYSOCK");
    if (path.isEmpty() || !co_await m_scope(m_sway.open(path)))
        co_return Answer::Absent;
    const QJsonValue subscription =
        co_await m_scope(m_sway.ask(Request::Subscribe, R"(["binding","mode","workspace"])"));
    if (!subscription[u"success"_s].toBool() || !co_await m_scope(readConfiguration())) {
        m_sway.close();
        co_return Answer::Absent;
    }
    m_isAsked = true;
    bind();
    co_return Answer::Given;
}

void SwayShortcuts::release()
{
    m_isAsked = false;
    settle();
    m_sway.drain();
    m_sway.close();
    m_escapeIsTaken = false;
}

/// False when sway does not say which keys are the user's.
QCoro::Task<bool> SwayShortcuts::readConfiguration()
{
    const QJsonValue state = co_await m_scope(m_sway.ask(Request::GetBindingState));
    m_mode = state[u"name"_s].toString(defaultMode);
    const QJsonValue config = co_await m_scope(m_sway.ask(Request::GetConfig));
    m_config = SwayConfig(config[u"config"_s].toString());
    co_return config[u"config"_s].isString();
}

/// When sway has forgotten every key but those of the user's configuration.
QCoro::Task<> SwayShortcuts::bindAgain()
{
    if (co_await m_scope(readConfiguration()))
        bind();
    else if (m_isAsked)
        m_sway.close(); // it is asked anew
}

void SwayShortcuts::bind()
{
    m_bound.clear();
    if (!m_escapeIsTaken && !m_config.binds(escapeKeys))
        m_bound.insert(escapeKeys, escapeCommand); // perhaps, by a run that was killed
    settle();
    Q_EMIT shortcutsChanged();
}

QHash<QString, QByteArray> SwayShortcuts::wanted() const
{
    QHash<QString, QByteArray> keys;
    if (!m_isAsked)
        return keys;
    for (const QString &key : keysOf(m_trigger))
        keys.insert(key, tapCommand);
    keys.insert(toggleKeys, toggleCommand);
    if (m_escapeIsTaken)
        keys.insert(escapeKeys, escapeCommand);
    keys.removeIf([this](const auto &key) { return m_config.binds(key.key()); });
    return keys;
}

/// A key is bound in the mode that is in force. In another than the usual one, such as for resizing windows,
/// it may be the one that leads out of it; keys that are given back must not wait for the end of that mode.
void SwayShortcuts::settle()
{
    if (m_mode != defaultMode) {
        if (!m_isAsked)
            giveBackInDefaultMode();
        return;
    }
    const QHash<QString, QByteArray> keys = wanted();
    for (auto bound = m_bound.cbegin(); bound != m_bound.cend(); ++bound) {
        if (!keys.contains(bound.key()))
            m_sway.run(unbinding(bound.key()));
    }
    for (auto key = keys.cbegin(); key != keys.cend(); ++key) {
        if (!m_bound.contains(key.key()))
            m_sway.run("bindsym --no-warn " + key.key().toLatin1() + ' ' + key.value());
    }
    m_bound = keys;
}

void SwayShortcuts::giveBackInDefaultMode()
{
    if (m_bound.isEmpty())
        return;
    QByteArray command = "mode default";
    for (auto bound = m_bound.cbegin(); bound != m_bound.cend(); ++bound)
        command += "; " + unbinding(bound.key());
    m_sway.run(command + "; mode \"" + m_mode.toUtf8() + '"');
    m_bound.clear();
}

Shortcuts SwayShortcuts::shortcuts() const
{
    Shortcuts shortcuts{.giver = Shortcuts::Giver::Sway};
    const QString twice = triggerName(m_trigger).toString();
    const QString once = u"Ctrl+Alt+Space"_s;
    const auto give = [&](const QString &keys, const QString &name, QString &place) {
        if (m_config.binds(keys))
            shortcuts.taken.append(name);
        else
            place = name;
    };
    give(keysOf(m_trigger).constFirst(), twice, shortcuts.twice);
    give(toggleKeys, once, shortcuts.once);
    return shortcuts;
}

bool SwayShortcuts::canTakeEscape() const
{
    return !m_config.binds(escapeKeys);
}

void SwayShortcuts::setEscapeTaken(bool taken)
{
    if (std::exchange(m_escapeIsTaken, taken) != taken)
        settle();
}

void SwayShortcuts::happened(const QString &event, const QJsonObject &what)
{
    const QString change = what[u"change"_s].toString();
    if (event == "workspace"_L1 && change == "reload"_L1) {
        spawn(bindAgain());
    } else if (event == "mode"_L1) {
        m_mode = change;
        settle();
    } else if (event == "binding"_L1) {
        const QByteArray command = what[u"binding"_s][u"command"_s].toString().toLatin1();
        if (command == tapCommand)
            Q_EMIT tapped();
        else if (command == toggleCommand)
            Q_EMIT toggled();
        else if (command == escapeCommand && m_escapeIsTaken)
            Q_EMIT escaped();
    }
}

} // namespace orvane
