#pragma once

#include <QString>

namespace orvane {

/// The path itself, or the nearest one around it that is there: what can be asked about a folder that will be
/// made. Waits for the disk.
[[nodiscard]] QString existingFolder(const QString &path);

} // namespace orvane
