#pragma once

#include "transcript/DisplaySegment.h"

#include <optional>
#include <vector>

namespace orvane::PlainLabelling {

using Vector = std::vector<float>;

/// Speaker labelling written down step by step, on one thread, without regard for its speed.
[[nodiscard]] QList<DisplaySegment> assign(QList<DisplaySegment> segments, const Vector &samples,
                                           int sampleRate, int maxSpeakers);

[[nodiscard]] std::optional<Vector> features(const Vector &span, int sampleRate);

} // namespace orvane::PlainLabelling
