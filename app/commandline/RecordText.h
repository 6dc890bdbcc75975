#pragma once

#include "history/TranscriptRecord.h"

#include <QString>

namespace orvane {

/// A moment as the command line shows it, in local time: "2025-03-03 14:05".
[[nodiscard]] QString shownTime(const QDateTime &moment);

/// A record for people to read: what it is, its transcript with time codes, what was made of it, and when.
[[nodiscard]] QString readable(const TranscriptRecord &record);

} // namespace orvane
