#pragma once

#include <QSettings>

namespace orvane::JsonSettingsFormat {

/// A QSettings format: one JSON object with the settings as its members, pretty-printed, keys sorted,
/// readable by the owner only. Booleans, texts, numbers, null, lists and nested objects come back as
/// what they were (numbers as qlonglong when whole, else double); a date is an object with the one
/// member "$date", its time in UTC as ISO 8601 with milliseconds.
///
/// A file that is no such object, or is too large to be one, is renamed to "….damaged" ("….damaged-2"
/// and so on when that is taken) and read as empty. Whoever makes a QSettings with this format holds the
/// lock that QSettings writes under, so that nobody's good file is renamed.
[[nodiscard]] QSettings::Format format();

} // namespace orvane::JsonSettingsFormat
