#pragma once

#include <span>

namespace orvane {

/// The amplitude of the sine of that frequency (Hz) in samples of 16 kHz.
[[nodiscard]] double amplitudeAt(double frequency, std::span<const float> samples);

/// The amplitude of a sine that would be as loud as everything in the samples.
[[nodiscard]] double wholeAmplitude(std::span<const float> samples);

} // namespace orvane
