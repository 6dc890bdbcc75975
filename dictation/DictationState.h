#pragma once

namespace orvane {

/// How far a dictation is.
enum class DictationState { Idle, Starting, Recording, Transcribing, Correcting };

} // namespace orvane
