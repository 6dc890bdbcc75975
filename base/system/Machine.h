#pragma once

#include <QString>

/// What machine this is. Empty text or 0 where something cannot be read.
namespace orvane::Machine {

/// In bytes.
[[nodiscard]] qint64 physicalMemory();

// `root` stands for the root folder of the system's own files.

/// Of the first processor.
[[nodiscard]] QString processorName(const QString &root = {});
/// What tells this machine from others and stays over restarts and updates.
[[nodiscard]] QString identifier(const QString &root = {});
[[nodiscard]] QString productName(const QString &root = {});

} // namespace orvane::Machine
