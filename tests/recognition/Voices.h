#pragma once

#include <random>
#include <vector>

namespace orvane::Voices {

/// A sound like a vowel: a fundamental in Hz and its harmonics, weaker the higher they are, with noise of
/// that amplitude. Mono samples of 16 kHz.
[[nodiscard]] std::vector<float> vowel(double seconds, float pitch, float noise, std::mt19937 &random);

} // namespace orvane::Voices
