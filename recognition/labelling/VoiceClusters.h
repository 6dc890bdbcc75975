#pragma once

#include "recognition/labelling/VoiceFeatures.h"

#include <span>
#include <vector>

namespace orvane::SpeakerDiarizer {

/// Groups voices into at most k clusters: for each vector the label of its cluster. Voices that are too much
/// alike get one label, whatever k is.
[[nodiscard]] std::vector<int> cluster(std::vector<Features> vectors, int k);

/// The labels after uniting the clusters whose centres (scaled for comparison) are close. What is close
/// to a third that is close to the first belongs to it too.
[[nodiscard]] std::vector<int> mergeClose(std::vector<int> labels, std::span<const Features> centers);

/// The mean in each dimension; none of no vectors.
[[nodiscard]] std::optional<Features> centroid(std::span<const Features> vectors);

} // namespace orvane::SpeakerDiarizer
