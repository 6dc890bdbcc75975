#pragma once

#include <optional>
#include <vector>

namespace orvane::PlainLabelling {

using Vector = std::vector<float>;

/// The features of a voice written down step by step, without regard for speed.
[[nodiscard]] std::optional<Vector> features(const Vector &span, int rate);

} // namespace orvane::PlainLabelling
