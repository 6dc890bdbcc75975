#pragma once

#include "update/UpdateRelease.h"

#include <chrono>
#include <functional>
#include <stop_token>

namespace orvane {

/// Brings the package of a release into a folder.
struct UpdateDownload
{
    UpdateRelease release;
    /// Has to exist.
    QString folder;
    /// How long the connection may bring nothing.
    std::chrono::milliseconds idleTimeout;
    /// Gets the fraction, 0…1, on the downloading thread; never when the server does not give the length.
    std::function<void(double)> progress;

    /// The path of the downloaded file, readable by its owner only, which replaced in one step what had
    /// that name before. The bytes go to disk as they arrive. Throws UpdateError and then leaves nothing
    /// behind. Blocks; for pool threads.
    [[nodiscard]] QString run(const std::stop_token &stop) const;
};

} // namespace orvane
