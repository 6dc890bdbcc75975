#pragma once

#include <QString>

namespace orvane {

/// A piece of speech as the recognition engine returned it.
struct RawSegment
{
    /// Milliseconds from the beginning of the submitted audio.
    qint64 start = 0;
    qint64 end = 0;
    /// Unchanged, with the engine's leading blank.
    QString text;

    bool operator==(const RawSegment &) const = default;
};

} // namespace orvane
