#pragma once

namespace orvane {

/// Samples in a second of all sound that the program handles: what speech recognition takes.
inline constexpr int sampleRate = 16'000;

} // namespace orvane
