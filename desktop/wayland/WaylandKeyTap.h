#pragma once

#include "base/Scope.h"
#include "desktop/KeyTap.h"
#include "desktop/wayland/ShortcutGiver.h"

#include <memory>
#include <vector>

namespace orvane {

/// The keys of a Wayland session, where programs hear no keyboard: those that the desktop presses for us, by
/// the first of its ways that gives some.
class WaylandKeyTap final : public KeyTap
{
    Q_OBJECT

public:
    using Givers = std::vector<std::unique_ptr<ShortcutGiver>>;

    WaylandKeyTap();
    /// They are asked in that order.
    explicit WaylandKeyTap(Givers givers);
    ~WaylandKeyTap() override;
    Q_DISABLE_COPY_MOVE(WaylandKeyTap)

    void setTrigger(TriggerKey key) override;
    void install() override;
    void uninstall() override;
    [[nodiscard]] bool isActive() const override { return m_giver != nullptr; }
    [[nodiscard]] bool escapeIsMissing() const override;
    [[nodiscard]] bool has(TriggerKey key) const override;
    [[nodiscard]] std::optional<Shortcuts> shortcuts() const override;
    [[nodiscard]] bool canBeSetUp() const override { return m_refusing != nullptr; }
    void setUp() override;
    void setEscapeIntercepted(bool intercepted) override;

private:
    QCoro::Task<> choose();
    QCoro::Task<> askTheUser(ShortcutGiver *giver);
    void use(ShortcutGiver *giver, ShortcutGiver *refusing);
    void tapped();

    const Givers m_givers;
    ShortcutGiver *m_giver = nullptr;    // whose keys are in force
    ShortcutGiver *m_refusing = nullptr; // would have some if the user agreed
    TriggerKey m_trigger = TriggerKey::RightCommand;
    bool m_escapeIsIntercepted = false;
    bool m_isBeingChosen = false;
    bool m_choiceIsStale = false;
    std::unique_ptr<Scope> m_installation;
};

} // namespace orvane
