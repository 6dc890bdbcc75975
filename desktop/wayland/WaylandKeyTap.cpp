#include "desktop/wayland/WaylandKeyTap.h"

#include "base/Async.h"
#include "base/localization/Localization.h"
#include "desktop/wayland/GnomeShortcuts.h"
#include "desktop/wayland/PlasmaShortcuts.h"
#include "desktop/wayland/PortalShortcuts.h"
#include "desktop/wayland/SwayShortcuts.h"

#include <QPointer>

#include <utility>

namespace orvane {

namespace {

using Answer = ShortcutGiver::Answer;
using Occasion = ShortcutGiver::Occasion;

WaylandKeyTap::Givers everyGiver()
{
    WaylandKeyTap::Givers givers;
    givers.push_back(std::make_unique<PlasmaShortcuts>());
    givers.push_back(std::make_unique<SwayShortcuts>());
    givers.push_back(std::make_unique<GnomeShortcuts>()); // what is set there already needs no consent
    givers.push_back(std::make_unique<PortalShortcuts>());
    return givers;
}

} // namespace

WaylandKeyTap::WaylandKeyTap() : WaylandKeyTap(everyGiver()) {}

WaylandKeyTap::WaylandKeyTap(Givers givers) : m_givers(std::move(givers))
{
    for (const auto &owned : m_givers) {
        ShortcutGiver *giver = owned.get();
        connect(giver, &ShortcutGiver::tapped, this, &WaylandKeyTap::tapped);
        connect(giver, &ShortcutGiver::toggled, this, &KeyTap::togglePressed);
        connect(giver, &ShortcutGiver::escaped, this, [this] {
            if (m_escapeIsIntercepted)
                Q_EMIT escapePressed();
        });
        connect(giver, &ShortcutGiver::shortcutsChanged, this, [this, giver] {
            if (giver == m_giver)
                use(m_giver, m_refusing);
        });
        connect(giver, &ShortcutGiver::restarted, this, [this] {
            if (m_installation)
                spawn(choose());
        });
    }
}

WaylandKeyTap::~WaylandKeyTap()
{
    m_installation.reset();
}

void WaylandKeyTap::setTrigger(TriggerKey key)
{
    if (std::exchange(m_trigger, key) != key && m_installation)
        spawn(choose());
}

void WaylandKeyTap::install()
{
    if (m_installation)
        return;
    m_installation = std::make_unique<Scope>();
    spawn(choose());
}

void WaylandKeyTap::uninstall()
{
    m_installation.reset();
    m_isBeingChosen = false; // who chooses goes no further
    use(nullptr, nullptr);
}

QCoro::Task<> WaylandKeyTap::choose()
{
    m_choiceIsStale = true;
    if (std::exchange(m_isBeingChosen, true))
        co_return;
    ShortcutGiver *giving = nullptr;
    ShortcutGiver *refusing = nullptr;
    while (std::exchange(m_choiceIsStale, false)) {
        giving = refusing = nullptr;
        for (const auto &giver : m_givers) {
            const Answer answer = co_await (*m_installation)(giver->ask(m_trigger, Occasion::Start));
            if (answer == Answer::Refused)
                refusing = giver.get();
            if (answer == Answer::Given)
                giving = giver.get();
            if (giving)
                break;
        }
    }
    m_isBeingChosen = false;
    use(giving, giving ? nullptr : refusing);
}

void WaylandKeyTap::setUp()
{
    if (m_refusing)
        spawn(askTheUser(m_refusing));
}

QCoro::Task<> WaylandKeyTap::askTheUser(ShortcutGiver *giver)
{
    const Answer answer = co_await (*m_installation)(giver->ask(m_trigger, Occasion::Wish));
    if (answer != Answer::Given) {
        Q_EMIT setUpEnded(giver->problem().isEmpty() ? Localization::text(u"Рабочий стол не дал клавиш.")
                                                     : giver->problem());
        co_return;
    }
    use(giver, nullptr);
    Q_EMIT setUpEnded({});
}

/// Also when the one in force has other keys than before.
void WaylandKeyTap::use(ShortcutGiver *giver, ShortcutGiver *refusing)
{
    const QPointer self(this);
    const bool wasActive = isActive();
    if (m_giver && m_giver != giver)
        m_giver->release();
    m_giver = giver;
    m_refusing = refusing;
    if (m_giver && m_escapeIsIntercepted)
        m_giver->setEscapeTaken(true);
    if (wasActive != isActive())
        Q_EMIT activeChanged();
    if (self)
        Q_EMIT keysChanged();
    if (self)
        Q_EMIT grabIsMissingChanged();
}

bool WaylandKeyTap::escapeIsMissing() const
{
    return !m_giver || !m_giver->canTakeEscape();
}

bool WaylandKeyTap::has(TriggerKey key) const
{
    return m_giver && key == m_trigger && !m_giver->shortcuts().twice.isEmpty();
}

std::optional<Shortcuts> WaylandKeyTap::shortcuts() const
{
    return m_giver ? std::optional(m_giver->shortcuts()) : std::nullopt;
}

void WaylandKeyTap::setEscapeIntercepted(bool intercepted)
{
    m_escapeIsIntercepted = intercepted;
    if (m_giver)
        m_giver->setEscapeTaken(intercepted);
}

void WaylandKeyTap::tapped()
{
    const QPointer self(this);
    Q_EMIT triggerKeyChanged(m_trigger, true);
    if (self)
        Q_EMIT triggerKeyChanged(m_trigger, false);
}

} // namespace orvane
