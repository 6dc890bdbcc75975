#pragma once

#include "transcript/DisplaySegment.h"

#include <QCoroTask>

#include <span>
#include <stop_token>

namespace orvane {
class AudioDecoder;
}

/// Numbers the voices in a transcript, from 1 in the order in which they first speak. It compares two simple
/// features of each segment, see VoiceFeatures.h.
namespace orvane::SpeakerDiarizer {

/// The segments with a speaker each, at most that many different ones; computed off the main thread, on all
/// cores. All get speaker 1 when the audio cannot be decoded. The decoder outlives the task. Throws
/// Cancelled soon after a stop is requested while it decodes. Main thread.
[[nodiscard]] QCoro::Task<QList<DisplaySegment>> assignByVoice(QList<DisplaySegment> segments,
                                                               QString audioPath, int maxSpeakers,
                                                               const AudioDecoder *decoder,
                                                               std::stop_token stop = {});

/// The same for the samples that the segments' times count in. On all cores; any thread.
[[nodiscard]] QList<DisplaySegment> assignByVoice(QList<DisplaySegment> segments,
                                                  std::span<const float> samples, int sampleRate,
                                                  int maxSpeakers);

/// Everything is said by speaker 1.
[[nodiscard]] QList<DisplaySegment> assignSingle(QList<DisplaySegment> segments);

} // namespace orvane::SpeakerDiarizer
