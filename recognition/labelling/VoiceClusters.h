#pragma once

#include "recognition/labelling/VoiceFeatures.h"

#include <vector>

namespace orvane::SpeakerDiarizer {

/// Groups voices into at most k clusters: for each vector the label of its cluster. Voices that are too much
/// alike get one label, whatever k is.
[[nodiscard]] std::vector<int> cluster(std::vector<Features> vectors, int k);

} // namespace orvane::SpeakerDiarizer
