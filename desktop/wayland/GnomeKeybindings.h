#pragma once

#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

/// The keys that GNOME's settings bind to commands of the user's, by the program gsettings. Every function
/// waits for it: call them on a pool thread.
namespace orvane::GnomeKeybindings {

struct Keybinding
{
    QString folder;      ///< one of ours, or a name made up by the settings
    QString name;        ///< as the settings show it
    QString command;     ///< a shell's
    QString accelerator; ///< such as "<Control><Alt>space"
};

/// Those of folders whose names begin so; none when these settings are not there.
[[nodiscard]] std::optional<QList<Keybinding>> withPrefix(const QString &prefix);

/// Adds it, or replaces the one of its folder; false when the settings do not take it.
[[nodiscard]] bool set(const Keybinding &keybinding);

/// Every key that GNOME or the user has bound, but those of our folders, as GnomeAccelerator
/// has them normalised.
[[nodiscard]] QStringList boundOutside(const QString &prefix);

} // namespace orvane::GnomeKeybindings
