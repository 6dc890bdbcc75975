#pragma once

#include "audio/decoding/AudioDecoderModule.h"

#include <cstdint>
#include <optional>

namespace orvane {

/// Bytes of sound that a WAV file says it has; none when it does not tell, as one that was never completed.
/// The decoding library reports those that are there, also of a file that was cut off.
[[nodiscard]] std::optional<std::int64_t> announcedWavBytes(MediaSource &source);

} // namespace orvane
