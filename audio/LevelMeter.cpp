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
    if (count == 0)
        return 0;
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
        m_level = smoothed(m_level, m_block.loudness());
        m_block = {};
        measured(m_level);
    }
}

float LevelMeter::loudness(std::span<const float> samples)
{
    Sums sums;
    sums.add(samples);
    return sums.loudness();
}

float LevelMeter::smoothed(float previous, float next)
{
    return previous + (next - previous) * (next > previous ? 0.55F : 0.18F);
}

} // namespace orvane
