#pragma once

#include "audio/SampleRate.h"

#include <QString>

#include <span>
#include <vector>

namespace orvane::test {

/// Speech of synthetic voices with pauses cut in, as samples of 16 kHz.
class Speech
{
public:
    enum class Voice { English, Russian };

    /// Positions of samples.
    struct Pause
    {
        size_t begin;
        size_t end;
    };

    [[nodiscard]] static bool isInstalled(Voice voice);

    void say(const QString &text, Voice voice = Voice::English);
    /// Says it as the WAV file does.
    void play(const QString &file);
    void add(std::span<const float> samples);
    void pause(double seconds);
    void makeWeaker(float factor);
    /// White noise over all of it, so many decibels under the loudest sample that there can be.
    void addNoise(double decibels);

    [[nodiscard]] const std::vector<float> &samples() const { return m_samples; }
    [[nodiscard]] double seconds() const { return double(m_samples.size()) / sampleRate; }
    [[nodiscard]] const std::vector<Pause> &pauses() const { return m_pauses; }
    /// As a WAV file.
    void write(const QString &file) const;

private:
    std::vector<float> m_samples;
    std::vector<Pause> m_pauses;
};

} // namespace orvane::test
