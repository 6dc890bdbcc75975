#include "dictation/SnapshotRhythm.h"

#include "dictation/PauseDetector.h"

namespace orvane {

namespace {

constexpr size_t minNewSpeech = 3 * sampleRate;
/// Together with the recognition at the end, these take at most 1.6 times the processor time of the
/// recognition of the whole.
constexpr size_t freeCount = 2;
constexpr size_t timeOfEachMore = 25 * sampleRate;
/// So soon after the last one only a pause so long that it may be the end is worth another.
constexpr size_t soon = 20 * sampleRate;
constexpr size_t longPause = sampleRate;

} // namespace

bool SnapshotRhythm::allows(const PauseDetector &speech, size_t heard) const
{
    if (!speech.isPausing())
        return false;
    const bool isLong = speech.pauses().back().length() >= longPause;
    const bool isEnough = speech.speech() - m_speechThen >= minNewSpeech;
    if (m_count == 0)
        return isEnough || isLong;
    const size_t since = heard - m_begun;
    return isEnough && (isLong || since >= soon) && m_count < freeCount + heard / timeOfEachMore &&
           since >= 2 * m_answerTime; // a slow engine is to be idle most of the time
}

void SnapshotRhythm::begin(const PauseDetector &speech, size_t heard)
{
    ++m_count;
    m_begun = heard;
    m_speechThen = speech.speech();
}

void SnapshotRhythm::end(size_t heard)
{
    m_answerTime = heard - m_begun;
}

} // namespace orvane
