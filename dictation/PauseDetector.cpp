#include "dictation/PauseDetector.h"

#include <algorithm>
#include <numeric>

namespace orvane {

namespace {

constexpr size_t frameSize = sampleRate / 50; // 20 ms

/// Frames of a mean, over which noise is steady.
constexpr size_t framesOfMean = 5;
/// The noise is the lowest mean of the last 6 s, kept by half seconds.
constexpr size_t framesOfPart = 25;
constexpr size_t partsOfNoise = 12;
/// What has 8 times the energy of the noise (9 dB) is loud.
constexpr float overNoise = 8;
/// Breath and echo are 27 dB weaker than loud speech.
constexpr float underSpeech = 1.0F / 500;
/// Loud speech fades by 3 dB in a minute and a half: speakers lean back.
constexpr float fading = 0.99985F;
/// It is known after a second: a bump at the microphone passes for speech, but not for its strength.
constexpr float heed = 1.0F / 50;
/// Digital silence, but for the rounding: −85 dB.
constexpr float silence = 3e-9F;

/// Keys and knocks are shorter than 80 ms. A consonant may close for one frame.
constexpr size_t shortestRun = 4;
constexpr size_t longestGap = 1;

} // namespace

bool PauseDetector::Loudness::isLoud(float energy)
{
    m_recent.push_back(energy);
    if (m_recent.size() > framesOfMean)
        m_recent.pop_front();
    m_mean = std::reduce(m_recent.begin(), m_recent.end()) / float(m_recent.size());
    m_speech *= fading;
    return energy > std::max(noise(m_mean) * overNoise, m_speech * underSpeech);
}

void PauseDetector::Loudness::heedSpeech()
{
    m_speech += std::max(m_mean - m_speech, 0.0F) * heed;
}

float PauseDetector::Loudness::noise(float mean)
{
    if (m_lowest.empty() || ++m_inPart == framesOfPart) {
        m_inPart = 0;
        m_lowest.push_back(mean);
        if (m_lowest.size() > partsOfNoise)
            m_lowest.pop_front();
    }
    m_lowest.back() = std::min(m_lowest.back(), mean);
    return std::max(*std::ranges::min_element(m_lowest), silence);
}

void PauseDetector::add(std::span<const float> samples)
{
    for (const float sample : samples) {
        m_energy += sample * sample;
        if (++m_inFrame == frameSize) {
            addFrame(m_energy / frameSize);
            m_energy = 0;
            m_inFrame = 0;
        }
    }
}

void PauseDetector::addFrame(float energy)
{
    m_position += frameSize;
    if (m_loudness.isLoud(energy)) {
        m_run += m_gap + 1;
        m_gap = 0;
        if (m_run >= shortestRun) {
            m_loudness.heedSpeech();
            speak();
        }
    } else if (++m_gap > longestGap) {
        m_run = 0;
        m_gap = 0;
    }

    if (m_isPausing) {
        m_pauses.back().end = m_position;
    } else if (m_run == 0 && m_position - m_speechEnd >= minQuiet &&
               m_speech - m_speechAtPause >= minSpeech) {
        m_isPausing = true;
        m_pauses.push_back({.begin = m_speechEnd, .end = m_position});
    }
}

/// The run, to this frame, is speech.
void PauseDetector::speak()
{
    const size_t begin = m_position - m_run * frameSize;
    if (m_isPausing) {
        m_isPausing = false;
        m_pauses.back().end = begin;
        m_speechAtPause = m_speech;
    }
    // What was added of this run before is not added again; a gap between words is speech.
    const bool goesOn = begin < m_speechEnd + minQuiet;
    m_speech += m_position - (goesOn ? m_speechEnd : begin);
    m_speechEnd = m_position;
}

} // namespace orvane
