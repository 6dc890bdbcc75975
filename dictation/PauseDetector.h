#pragma once

#include "audio/SampleRate.h"

#include <cstddef>
#include <deque>
#include <span>
#include <vector>

namespace orvane {

/// Hears in samples (16 kHz mono) where speech pauses, over whatever steady noise the room makes. Positions
/// are numbers of samples from the first one.
class PauseDetector
{
public:
    static constexpr size_t minQuiet = sampleRate * 4 / 10;
    static constexpr size_t minSpeech = sampleRate;

    /// At least minQuiet without speech, after at least minSpeech of it.
    struct Pause
    {
        size_t begin;
        size_t end;

        [[nodiscard]] size_t length() const { return end - begin; }
        [[nodiscard]] size_t middle() const { return begin + length() / 2; }
    };

    void add(std::span<const float> samples);

    /// All so far, in order. While one lasts, it is the last and ends with what was added.
    [[nodiscard]] const std::vector<Pause> &pauses() const { return m_pauses; }
    [[nodiscard]] bool isPausing() const { return m_isPausing; }
    /// The end of the last speech.
    [[nodiscard]] size_t speechEnd() const { return m_speechEnd; }
    /// How much speech there has been, with the little gaps between words.
    [[nodiscard]] size_t speech() const { return m_speech; }

private:
    /// Tells loud moments from quiet ones by what was heard before.
    class Loudness
    {
    public:
        [[nodiscard]] bool isLoud(float energy);
        /// The last frame was speech.
        void heedSpeech();

    private:
        [[nodiscard]] float noise(float mean);

        std::deque<float> m_recent; // energies of frames
        std::deque<float> m_lowest; // of their means, in each part of the last seconds
        size_t m_inPart = 0;
        float m_mean = 0;
        float m_speech = 0;
    };

    void addFrame(float energy);
    void speak();

    float m_energy = 0; // of the frame that is not whole yet
    size_t m_inFrame = 0;
    size_t m_position = 0; // the end of the last whole frame
    Loudness m_loudness;

    size_t m_run = 0; // loud frames in a row, and the quiet ones after them
    size_t m_gap = 0;

    size_t m_speechEnd = 0;
    size_t m_speech = 0;
    size_t m_speechAtPause = 0;
    bool m_isPausing = false;
    std::vector<Pause> m_pauses;
};

} // namespace orvane
