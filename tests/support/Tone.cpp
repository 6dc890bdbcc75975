#include "tests/support/Tone.h"

#include "audio/SampleRate.h"

#include <cmath>
#include <complex>
#include <numbers>

namespace orvane {

double amplitudeAt(double frequency, std::span<const float> samples)
{
    const double step = 2 * std::numbers::pi * frequency / sampleRate;
    std::complex<double> sum = 0;
    for (size_t index = 0; index < samples.size(); ++index)
        sum += double(samples[index]) * std::polar(1.0, -step * double(index));
    return 2 * std::abs(sum) / double(samples.size());
}

double wholeAmplitude(std::span<const float> samples)
{
    double squares = 0;
    for (const float sample : samples)
        squares += double(sample) * sample;
    return std::sqrt(2 * squares / double(samples.size()));
}

} // namespace orvane
