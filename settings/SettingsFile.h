#pragma once

#include <QString>
#include <QVariantMap>

/// The file of the preferences: one JSON object with the settings as its members, pretty-printed, keys
/// sorted, readable by the owner only. Booleans, texts, numbers, null, lists and nested objects come back as
/// what they were (numbers as qlonglong when whole, else double); a date is an object with the one member
/// "$date", its time in UTC as ISO 8601 with milliseconds. Any thread.
namespace orvane::SettingsFile {

/// Empty when there is no file, or none that can be read. Changes nothing.
[[nodiscard]] QVariantMap read(const QString &path);

/// Writes the changes, of which an invalid one removes its key, into what the file holds now, and returns
/// that. Other processes that do the same at the same time wait. A file that is no such object, or too large
/// to be one, is first renamed to "….damaged" ("….damaged-2" and so on). Throws Error, with nothing changed.
/// Waits for the disk.
QVariantMap change(const QString &path, const QVariantMap &changes);

} // namespace orvane::SettingsFile
