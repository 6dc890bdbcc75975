#include "desktop/wayland/GnomeShortcuts.h"

#include "base/Async.h"
#include "base/StandardFolders.h"
#include "base/localization/Localization.h"
#include "desktop/wayland/GnomeAccelerator.h"

#include <QDBusConnection>

#include <array>
#include <utility>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

using GnomeAccelerator::acceleratorOf;
using GnomeAccelerator::nameOf;
using GnomeKeybindings::Keybinding;

const QString prefix = u"orvane-"_s;
const QString tapFolder = u"orvane-tap"_s;
const QString toggleFolder = u"orvane-toggle"_s;

QString commandFor(const QString &word)
{
    QString program = commandOfProgram();
    return u'\'' + program.replace(u'\'', u"'\\''"_s) + u"' "_s + word;
}

std::array<Keybinding, 2> keybindings(TriggerKey trigger)
{
    return {{{.folder = tapFolder,
              .name = u"Orvane: "_s + Localization::text(u"Начать или закончить диктовку: нажать дважды"),
              .command = commandFor(u"tap"_s),
              .accelerator = acceleratorOf(trigger)},
             {.folder = toggleFolder,
              .name = u"Orvane: "_s + Localization::text(u"Начать или закончить диктовку"),
              .command = commandFor(u"toggle"_s),
              .accelerator = u"<Control><Alt>space"_s}}};
}

} // namespace

GnomeShortcuts::GnomeShortcuts()
{
    m_shortcuts.giver = Shortcuts::Giver::Gnome;
    QDBusConnection::sessionBus().connect({}, {}, u"ca.desrt.dconf.Writer"_s, u"Notify"_s, this,
                                          SLOT(settingsChanged(QString)));
}

GnomeShortcuts::~GnomeShortcuts()
{
    m_scope.end();
}

QCoro::Task<ShortcutGiver::Answer> GnomeShortcuts::ask(TriggerKey trigger, Occasion occasion)
{
    m_problem.clear();
    if (!qEnvironmentVariable("XDG_CURRENT_DESKTOP").contains("GNOME"_L1, Qt::CaseInsensitive))
        co_return Answer::Absent;
    if (occasion == Occasion::Wish) {
        const Written written = co_await m_scope(offMainThread([trigger] { return write(trigger); }));
        m_shortcuts.taken = written.taken;
        if (!written.isTakenIn)
            m_problem = Localization::text(u"Настройки GNOME не приняли клавиш.");
        else if (!written.taken.isEmpty())
            m_problem =
                Localization::text(u"Уже занято на рабочем столе: %1.").arg(written.taken.join(u", "_s));
    }
    m_trigger = trigger;
    const auto found = co_await m_scope(offMainThread([trigger] { return bound(trigger); }));
    if (!found)
        co_return Answer::Absent;
    publish(*found);
    m_isAsked = !found->isEmpty();
    co_return m_isAsked ? Answer::Given : Answer::Refused;
}

/// What an earlier run set follows the program's place and the chosen trigger; a key that the user set stays.
std::optional<GnomeShortcuts::Keybindings> GnomeShortcuts::bound(TriggerKey trigger)
{
    std::optional<Keybindings> found = GnomeKeybindings::withPrefix(prefix);
    if (!found)
        return std::nullopt;
    for (Keybinding &keybinding : *found) {
        for (const Keybinding &ours : keybindings(trigger)) {
            if (keybinding.folder != ours.folder)
                continue;
            Keybinding wanted = keybinding;
            wanted.command = ours.command;
            for (const TriggerKey other : triggerKeys) {
                if (keybinding.folder == tapFolder && keybinding.accelerator == acceleratorOf(other))
                    wanted.accelerator = ours.accelerator;
            }
            const bool differs =
                wanted.command != keybinding.command || wanted.accelerator != keybinding.accelerator;
            if (differs && GnomeKeybindings::set(wanted))
                keybinding = wanted;
        }
    }
    return found;
}

GnomeShortcuts::Written GnomeShortcuts::write(TriggerKey trigger)
{
    Written written;
    const QStringList others = GnomeKeybindings::boundOutside(prefix);
    for (const Keybinding &keybinding : keybindings(trigger)) {
        if (others.contains(GnomeAccelerator::normalised(keybinding.accelerator)))
            written.taken.append(nameOf(keybinding.accelerator));
        else if (!GnomeKeybindings::set(keybinding))
            written.isTakenIn = false;
    }
    return written;
}

void GnomeShortcuts::publish(const Keybindings &keybindings)
{
    m_shortcuts.twice.clear();
    m_shortcuts.once.clear();
    for (const Keybinding &keybinding : keybindings) {
        if (keybinding.accelerator.isEmpty())
            continue;
        QString &place = keybinding.folder == tapFolder ? m_shortcuts.twice : m_shortcuts.once;
        place = nameOf(keybinding.accelerator);
    }
}

void GnomeShortcuts::settingsChanged(const QString &prefixOfChange)
{
    if (m_isAsked && prefixOfChange.contains("/media-keys/custom-keybinding"_L1))
        spawn(readAgain());
}

QCoro::Task<> GnomeShortcuts::readAgain()
{
    const Shortcuts before = m_shortcuts;
    const auto found = co_await m_scope(offMainThread([] { return GnomeKeybindings::withPrefix(prefix); }));
    if (!found || !m_isAsked)
        co_return;
    publish(*found);
    if (m_shortcuts != before)
        Q_EMIT shortcutsChanged();
}

} // namespace orvane
