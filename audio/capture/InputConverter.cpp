#include "audio/capture/InputConverter.h"

#include "audio/SampleRate.h"

#include <algorithm>
#include <cstdint>
#include <new>
#include <numeric>

namespace orvane {

namespace {

// The filter may swing over the limits; a float device may give anything.
float inRange(float sample)
{
    const float clipped = std::max(-1.0F, std::min(sample, 1.0F));
    return sample == sample ? clipped : 0.0F;
}

} // namespace

InputConverter::InputConverter(int rate, int channels) : m_channels(channels)
{
    AVChannelLayout mono{};
    av_channel_layout_default(&mono, 1);
    SwrContext *made = nullptr;
    const int set = swr_alloc_set_opts2(&made, &mono, AV_SAMPLE_FMT_FLT, sampleRate, &mono, AV_SAMPLE_FMT_FLT,
                                        rate, 0, nullptr);
    m_context.reset(made);
    if (set < 0 || swr_init(made) < 0)
        throw std::bad_alloc();
}

std::span<const float> InputConverter::convert(std::span<const float> interleaved)
{
    const auto channels = size_t(m_channels);
    m_mixed.resize(interleaved.size() / channels);
    for (size_t frame = 0; frame < m_mixed.size(); ++frame) {
        const auto samples = interleaved.subspan(frame * channels, channels);
        m_mixed[frame] = inRange(std::accumulate(samples.begin(), samples.end(), 0.0F) / float(m_channels));
    }
    return resample(m_mixed.data(), int(m_mixed.size()));
}

std::span<const float> InputConverter::finish()
{
    return resample(nullptr, 0);
}

std::span<const float> InputConverter::resample(const float *samples, int count)
{
    const int most = swr_get_out_samples(m_context.get(), count);
    if (most <= 0)
        return {};
    m_converted.resize(size_t(most));
    auto *output = reinterpret_cast<std::uint8_t *>(m_converted.data());
    const auto *input = reinterpret_cast<const std::uint8_t *>(samples);
    const int made = swr_convert(m_context.get(), &output, most, samples ? &input : nullptr, count);
    const auto ready = std::span(m_converted).first(size_t(std::max(made, 0)));
    std::ranges::transform(ready, ready.begin(), inRange);
    return ready;
}

} // namespace orvane
