#pragma once

#include <cstddef>

namespace orvane {

class PauseDetector;

/// When it is worth recognising what has been said so far. Each time costs one pass of the model, however
/// little is new, and the one that runs when the dictation ends delays its text. Counts in samples.
class SnapshotRhythm
{
public:
    /// Whether to begin in the pause that lasts, `heard` samples after the beginning of the recording.
    [[nodiscard]] bool allows(const PauseDetector &speech, size_t heard) const;

    void begin(const PauseDetector &speech, size_t heard);
    /// The answer to what was begun is there, or none will come.
    void end(size_t heard);

private:
    size_t m_count = 0;
    size_t m_begun = 0;
    size_t m_speechThen = 0;
    size_t m_answerTime = 0;
};

} // namespace orvane
