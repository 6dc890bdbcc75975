#pragma once

#include <QString>

#include <functional>

namespace orvane {

/// Where the device report reads what it says about the machine. Each is called only when a report is made.
/// Empty text or 0 where something cannot be read.
struct DeviceSources
{
    /// What tells this machine from others and stays over restarts and updates. Never sent as it is.
    std::function<QString()> platformUUID;
    /// The operating system and its version, as it words them.
    std::function<QString()> os;
    std::function<QString()> model;
    std::function<QString()> cpu;
    /// In bytes.
    std::function<double()> memory;
    /// Such as "ru_RU".
    std::function<QString()> locale;

    /// `root` stands for the root folder of the system's own files.
    [[nodiscard]] static DeviceSources ofThisMachine(const QString &root = {});
};

} // namespace orvane
