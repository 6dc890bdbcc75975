#pragma once

#include <functional>
#include <span>

namespace orvane {

/// What an indicator shows of the loudness: 0…1, quick to rise, slow to fall, hardly moved by room noise.
class LevelMeter
{
public:
    /// Samples at 16 kHz in one level: 85 ms.
    static constexpr size_t blockSize = 4096 / 3;
    /// Levels that an indicator shows beside each other.
    static constexpr size_t waveformSize = 48;

    /// Calls `measured` with the level after each block that the samples complete, of whatever number
    /// they come.
    void add(std::span<const float> samples, const std::function<void(float)> &measured);

private:
    struct Sums
    {
        double squares = 0;
        float peak = 0;
        size_t count = 0;

        void add(std::span<const float> samples);
        [[nodiscard]] float loudness() const;
    };

    Sums m_block;
    float m_level = 0;
};

} // namespace orvane
