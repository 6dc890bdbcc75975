#pragma once

#include "base/Scope.h"
#include "desktop/wayland/GnomeKeybindings.h"
#include "desktop/wayland/ShortcutGiver.h"

#include <optional>

namespace orvane {

/// Keys that GNOME's settings bind to `orvane tap` and `orvane toggle` once the user wishes it, and for good.
/// The presses come from those commands.
class GnomeShortcuts final : public ShortcutGiver
{
    Q_OBJECT

public:
    GnomeShortcuts();
    ~GnomeShortcuts() override;
    Q_DISABLE_COPY_MOVE(GnomeShortcuts)

    [[nodiscard]] QCoro::Task<Answer> ask(TriggerKey trigger, Occasion occasion) override;
    void release() override { m_isAsked = false; } // they are the user's
    [[nodiscard]] Shortcuts shortcuts() const override { return m_shortcuts; }
    [[nodiscard]] QString problem() const override { return m_problem; }

private Q_SLOTS:
    void settingsChanged(const QString &prefix);

private:
    using Keybindings = QList<GnomeKeybindings::Keybinding>;

    /// What is bound; none when these settings are not there.
    static std::optional<Keybindings> bound(TriggerKey trigger);
    struct Written
    {
        QStringList taken;
        bool isTakenIn = true;
    };
    static Written write(TriggerKey trigger);
    void publish(const Keybindings &keybindings);
    QCoro::Task<> readAgain();

    TriggerKey m_trigger = TriggerKey::RightCommand;
    Shortcuts m_shortcuts;
    QString m_problem;
    bool m_isAsked = false;
    Scope m_scope;
};

} // namespace orvane
