#include "recognition/labelling/VoiceFeatures.h"

#include <algorithm>
#include <numeric>

namespace orvane::SpeakerDiarizer {

namespace {

constexpr size_t frameLength = 512;
constexpr size_t frameHop = 256;
constexpr int maxFrames = 120;
constexpr float silentEnergy = 0.000001F;
constexpr int highestPitch = 400; // Hz
constexpr int lowestPitch = 70;
/// A frame whose best correlation is not above this is unvoiced.
constexpr float minCorrelation = 0.3F;
constexpr size_t minVoicedFrames = 3;

float energyOf(std::span<const float> frame)
{
    float sum = 0;
    for (const float sample : frame)
        sum += sample * sample;
    return sum;
}

float energyOfDifferences(std::span<const float> frame)
{
    float sum = 0;
    for (size_t i = 1; i < frame.size(); ++i) {
        const float difference = frame[i] - frame[i - 1];
        sum += difference * difference;
    }
    return sum;
}

// Float addition depends on its order, and each lag keeps its own; what makes this fast is that the sums of
// neighbouring lags are independent, so one instruction adds to several of them.
constexpr size_t lagsAtOnce = 32;

void correlate(std::span<const float> frame, size_t firstLag, std::array<float, lagsAtOnce> &sums)
{
    sums.fill(0);
    const size_t lastLag = firstLag + lagsAtOnce - 1;
    const size_t common = frame.size() > lastLag ? frame.size() - lastLag : 0;
    const float *const shifted = frame.data() + firstLag;
    for (size_t i = 0; i < common; ++i) {
        const float sample = frame[i];
        for (size_t lag = 0; lag < lagsAtOnce; ++lag)
            sums[lag] += sample * shifted[i + lag];
    }
    // The shorter lags reach further.
    for (size_t lag = 0; lag < lagsAtOnce; ++lag) {
        for (size_t i = common; i + firstLag + lag < frame.size(); ++i)
            sums[lag] += frame[i] * shifted[i + lag];
    }
}

/// In Hz; none when the frame is unvoiced.
std::optional<float> pitchOf(std::span<const float> frame, float energy, int sampleRate)
{
    const auto firstLag = static_cast<size_t>(sampleRate / highestPitch);
    const size_t end = std::min(static_cast<size_t>(sampleRate / lowestPitch) + 1, frame.size());
    size_t bestLag = 0;
    float best = 0;
    std::array<float, lagsAtOnce> sums{};
    for (size_t lag = firstLag; lag < end; ++lag) {
        const size_t place = (lag - firstLag) % lagsAtOnce;
        if (place == 0)
            correlate(frame, lag, sums);
        const float correlation = sums[place] / energy;
        if (correlation > best) {
            best = correlation;
            bestLag = lag;
        }
    }
    if (bestLag == 0 || best <= minCorrelation)
        return std::nullopt;
    return static_cast<float>(sampleRate) / static_cast<float>(bestLag);
}

} // namespace

std::optional<Features> voiceFeatures(std::span<const float> samples, int sampleRate)
{
    std::vector<float> pitches;
    std::vector<float> brightness;
    for (int count = 0; count < maxFrames && samples.size() >= frameLength; ++count) {
        const std::span<const float> frame = samples.first(frameLength);
        samples = samples.subspan(frameHop);
        const float energy = energyOf(frame);
        if (energy <= silentEnergy)
            continue;
        brightness.push_back(energyOfDifferences(frame) / energy);
        if (const std::optional<float> pitch = pitchOf(frame, energy, sampleRate))
            pitches.push_back(*pitch);
    }
    if (pitches.size() < minVoicedFrames)
        return std::nullopt;
    const float mean =
        std::accumulate(brightness.begin(), brightness.end(), 0.0F) / static_cast<float>(brightness.size());
    return Features{median(std::move(pitches)), mean};
}

float median(std::vector<float> values)
{
    if (values.empty())
        return 0;
    std::ranges::sort(values);
    const size_t middle = values.size() / 2;
    return values.size() % 2 == 1 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

} // namespace orvane::SpeakerDiarizer
