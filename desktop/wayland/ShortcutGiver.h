#pragma once

#include "desktop/Shortcuts.h"
#include "settings/StoredChoices.h"

#include <QObject>
#include <QString>

#include <QCoroTask>

namespace orvane {

/// One of the ways in which Wayland's desktops press keys for a program. Main thread.
class ShortcutGiver : public QObject
{
    Q_OBJECT

public:
    /// How it went when keys were asked for.
    enum class Answer {
        Absent,  ///< this desktop has no such way
        Refused, ///< it has, and the user has not agreed so far
        Given
    };
    /// Why they are asked for.
    enum class Occasion {
        Start, ///< the program wants to have them: the user is not asked what they have refused
        Wish   ///< the user wants them
    };

    /// Asks for the keys, of which the trigger is to be pressed twice. Given already, they are those of that
    /// trigger from now on.
    [[nodiscard]] virtual QCoro::Task<Answer> ask(TriggerKey trigger, Occasion occasion) = 0;
    /// Gives every key back.
    virtual void release() = 0;
    /// The keys that are in force.
    [[nodiscard]] virtual Shortcuts shortcuts() const = 0;
    /// Whether Esc can be taken from the focused application.
    [[nodiscard]] virtual bool canTakeEscape() const { return false; }
    virtual void setEscapeTaken(bool taken) { Q_UNUSED(taken) }
    /// Why the last wish was not fulfilled, a sentence; empty when that is not known.
    [[nodiscard]] virtual QString problem() const { return {}; }

Q_SIGNALS:
    void tapped();
    void toggled();
    void escaped();
    /// Also for canTakeEscape().
    void shortcutsChanged();
    /// Whoever gave them is gone, or has come: ask again.
    void restarted();
};

} // namespace orvane
