#pragma once

#include <QString>
#include <QStringList>

namespace orvane {

/// The keys that a desktop presses for the program, as its user calls them.
struct Shortcuts
{
    /// Who gives them.
    enum class Giver { Plasma, Sway, Portal, Gnome };

    Giver giver = Giver::Portal;
    /// Begins and ends a dictation when it is pressed twice. Empty where a modifier alone cannot be had.
    QString twice{};
    /// Begins and ends one when it is pressed once. Empty when it has been given to something else.
    QString once{};
    /// What something else has, so that it was not taken.
    QStringList taken{};

    bool operator==(const Shortcuts &) const = default;
};

} // namespace orvane
