#pragma once

#include "recognition/RecognisedSpeech.h"

#include <QByteArray>

#include <optional>

namespace orvane::WhisperResponse {

/// What whisper-server's "verbose_json" answer says, segments in order; nothing when the answer is not an
/// object with an array of objects under "segments". Times in the answer are seconds and are cut to
/// whole milliseconds; a missing or unusable time is 0, a missing text empty. Any thread.
[[nodiscard]] std::optional<RecognisedSpeech> speech(const QByteArray &json);

/// Whether an answer of status 200 says that the audio could not be read, as older servers do.
[[nodiscard]] bool isRejection(const QByteArray &json);

} // namespace orvane::WhisperResponse
