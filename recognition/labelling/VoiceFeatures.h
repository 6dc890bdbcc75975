#pragma once

#include <array>
#include <optional>
#include <span>
#include <vector>

namespace orvane::SpeakerDiarizer {

/// What tells one voice from another: the median pitch in Hz and the mean brightness, which is the energy of
/// the differences between neighbouring samples over the energy of the samples.
using Features = std::array<float, 2>;

/// Of one piece of speech; none when too little of it is voiced. Looks at the first two seconds only.
[[nodiscard]] std::optional<Features> voiceFeatures(std::span<const float> samples, int sampleRate);

/// The mean of the two middle values for an even count; 0 for none.
[[nodiscard]] float median(std::vector<float> values);

} // namespace orvane::SpeakerDiarizer
