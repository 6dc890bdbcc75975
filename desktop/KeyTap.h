#pragma once

#include "desktop/Shortcuts.h"
#include "settings/StoredChoices.h"

#include <QObject>

#include <memory>
#include <optional>

namespace orvane {

/// Hears the keys of dictation wherever the user works. This class itself hears nothing and never becomes
/// active: it is the tap of a display that gives no global keys.
class KeyTap : public QObject
{
    Q_OBJECT

public:
    /// The tap of this display, never null. Needs the application object.
    [[nodiscard]] static std::unique_ptr<KeyTap> forDisplay();

    /// Which trigger key is listened for, where one has to be chosen beforehand.
    virtual void setTrigger(TriggerKey key) { Q_UNUSED(key) }
    /// Begins to listen, as soon as that works. Does nothing when it was called before.
    virtual void install() {}
    /// Lets go of every key.
    virtual void uninstall() {}
    /// Whether presses arrive.
    [[nodiscard]] virtual bool isActive() const { return false; }
    /// Whether F5, or Esc while it is intercepted, cannot be had because another program holds it. Taken
    /// within 2 s of being free; the trigger keys go on working.
    [[nodiscard]] virtual bool grabIsMissing() const { return false; }
    /// Whether Esc is one of those.
    [[nodiscard]] virtual bool escapeIsMissing() const { return false; }
    /// Whether the keyboard has that key: options of its layout may have given it another meaning.
    [[nodiscard]] virtual bool has(TriggerKey key) const
    {
        Q_UNUSED(key)
        return false;
    }
    /// Whether the right Alt is an AltGr, with which the user types.
    [[nodiscard]] virtual bool rightOptionTypes() const { return false; }
    /// What the desktop gives; none where the program itself listens to the keyboard, and while nothing is
    /// given.
    [[nodiscard]] virtual std::optional<Shortcuts> shortcuts() const { return std::nullopt; }
    /// Whether the user can have keys here by agreeing to it: see setUp().
    [[nodiscard]] virtual bool canBeSetUp() const { return false; }
    /// Asks the desktop for keys on behalf of the user, who may be asked in turn. It ends in setUpEnded().
    virtual void setUp() {}
    /// Whether Esc comes here instead of going to the focused application.
    virtual void setEscapeIntercepted(bool intercepted) { Q_UNUSED(intercepted) }

Q_SIGNALS:
    /// A trigger key went down or up. It reaches the focused application too.
    void triggerKeyChanged(orvane::TriggerKey key, bool down);
    /// A key that is no trigger key went down.
    void otherKeyPressed();
    /// F5 alone was pressed; holding it is one press.
    void togglePressed();
    /// Esc alone was pressed while it is intercepted; holding it is one press.
    void escapePressed();
    void activeChanged();
    /// Also for escapeIsMissing().
    void grabIsMissingChanged();
    /// What the keys mean has changed, or which they are.
    void keysChanged();
    /// With what kept the desktop from giving keys, a sentence; empty when it gave some.
    void setUpEnded(const QString &problem);
};

} // namespace orvane
