#pragma once

#include <QString>

namespace orvane {

/// What of a running dictation has been recognised so far, as it will read.
struct LiveText
{
    /// Does not change any more; it only grows.
    QString settled;
    /// What follows it, and may be recognised otherwise yet.
    QString unsettled;

    bool operator==(const LiveText &) const = default;
};

} // namespace orvane
