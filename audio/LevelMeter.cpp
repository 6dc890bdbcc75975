#include "audio/LevelMeter.h"

#include <algorithm>
#include <cmath>

namespace orvane {

void LevelMeter::Sums::add(std::span<const float> samples)
{
    for (const float sample : samples) {
        squares += double(sample) * sample;
        peak = std::max(peak, std::abs(sample));
    }
    count += samples.size();
}

float LevelMeter::Sums::loudness() const
{
    const auto rms = float(std::sqrt(squares / double(count)));
    const float raw = std::min(std::max(rms * 16, peak * 4), 1.0F);
    const float shown = std::pow(raw, 0.6F);
    return rms < 0.004F ? shown * 0.25F : shown; // room noise
}

void LevelMeter::add(std::span<const float> samples, const std::function<void(float)> &measured)
{
    while (!samples.empty()) {
        const size_t fitting = std::min(samples.size(), blockSize - m_block.count);
        m_block.add(samples.first(fitting));
        samples = samples.subspan(fitting);
        if (m_block.count < blockSize)
            return;
        const float loudness = m_block.loudness();
        m_level += (loudness - m_level) * (loudness > m_level ? 0.55F : 0.18F);
        m_block = {};
        measured(m_level);
    }
}

} // namespace orvane
