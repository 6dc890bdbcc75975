#pragma once

#include <QtGlobal>

namespace orvane {

/// What a process of the user's has used up so far and holds now, as the system tells.
struct ProcessCosts
{
    double processorSeconds = 0;
    /// How often its threads, those that run now, went to sleep of themselves.
    qint64 wakeUps = 0;
    double residentMiB = 0;
    /// What is its own and no file's.
    double privateMiB = 0;

    [[nodiscard]] static ProcessCosts of(qint64 pid);
};

} // namespace orvane
