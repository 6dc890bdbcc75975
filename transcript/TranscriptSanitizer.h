#pragma once

#include "transcript/DisplaySegment.h"

#include <QList>

namespace orvane::TranscriptSanitizer {

/// How many identical lines in a row a transcript keeps.
inline constexpr int keptRepeats = 2;

/// Cuts runs of equal segments, which recognition models produce on silence and noise, to their first
/// `keep`. Texts are compared without surrounding white space and letter case; blank segments never
/// count as a run. Kept segments stay in order and unchanged; a list of at most `keep` comes back as is.
[[nodiscard]] QList<DisplaySegment> collapseRepeats(const QList<DisplaySegment> &segments, int keep);

} // namespace orvane::TranscriptSanitizer
