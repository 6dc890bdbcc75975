#include "tests/recognition/Voices.h"

#include "audio/SampleRate.h"

#include <cmath>
#include <numbers>

namespace orvane::Voices {

std::vector<float> vowel(double seconds, float pitch, float noise, std::mt19937 &random)
{
    std::uniform_real_distribution<float> hiss(-noise, noise);
    std::vector<float> samples(static_cast<size_t>(seconds * sampleRate));
    for (size_t i = 0; i < samples.size(); ++i) {
        const float phase =
            2 * std::numbers::pi_v<float> * pitch * static_cast<float>(i % sampleRate) / sampleRate;
        samples[i] = 0.2F * std::sin(phase) + 0.1F * std::sin(2 * phase) + 0.05F * std::sin(3 * phase) +
                     (noise > 0 ? hiss(random) : 0);
    }
    return samples;
}

} // namespace orvane::Voices
