#include "audio/decoding/FFmpegResampler.h"

#include "audio/SampleRate.h"

extern "C" {
#include <libavutil/opt.h>
}

#include <algorithm>
#include <array>

namespace orvane {

namespace {

// What audio can have; outside, a damaged header speaks. The upper end is DSD512 as its decoder gives it.
constexpr int lowestRate = 1000;
constexpr int highestRate = 2'822'400;
// As many as the resampler can mix.
constexpr int maxChannels = 64;

// Each channel's share for layouts that FFmpeg cannot mix: the sound field's sum is its first channel,
// of other channels nobody knows where they belong.
std::array<double, maxChannels> ownMatrix(const AVChannelLayout &layout)
{
    std::array<double, maxChannels> shares{};
    if (layout.order == AV_CHANNEL_ORDER_AMBISONIC)
        shares.front() = 1;
    else
        std::fill_n(shares.begin(), layout.nb_channels, 1.0 / layout.nb_channels);
    return shares;
}

} // namespace

FFmpegResampler::FFmpegResampler(SampleSink &sink) : m_sink(sink) {}

FFmpegResampler::~FFmpegResampler()
{
    av_channel_layout_uninit(&m_layout);
}

FFmpegResampler::Taken FFmpegResampler::add(const AVFrame &frame)
{
    if (!fits(frame)) {
        finish();
        if (!configure(frame))
            return Taken::NotConfigurable;
    }
    convert(&frame);
    return Taken::Yes;
}

void FFmpegResampler::finish()
{
    while (m_context && convert(nullptr) > 0) {
    }
    m_context.reset();
}

bool FFmpegResampler::fits(const AVFrame &frame) const
{
    return m_context && frame.sample_rate == m_rate && frame.format == m_format &&
           av_channel_layout_compare(&frame.ch_layout, &m_layout) == 0;
}

bool FFmpegResampler::configure(const AVFrame &frame)
{
    const int channels = frame.ch_layout.nb_channels;
    if (channels < 1 || channels > maxChannels || frame.sample_rate < lowestRate ||
        frame.sample_rate > highestRate)
        return false;
    if (av_channel_layout_copy(&m_layout, &frame.ch_layout) < 0)
        fail(DecodingOutcome::NoRoom);
    m_format = frame.format;
    m_rate = frame.sample_rate;
    m_context = make(Matrix::Usual);
    if (!m_context)
        m_context = make(Matrix::OfOurs);
    return m_context != nullptr;
}

FFmpegHandle<SwrContext> FFmpegResampler::make(Matrix matrix)
{
    AVChannelLayout mono{};
    av_channel_layout_default(&mono, 1);
    AVChannelLayout guessed{};
    av_channel_layout_default(&guessed, m_layout.nb_channels);
    const bool isKnown = m_layout.order != AV_CHANNEL_ORDER_UNSPEC;

    // Planar, though there is one channel: the filter then writes into the sink without a copy.
    SwrContext *made = nullptr;
    const int set =
        swr_alloc_set_opts2(&made, &mono, AV_SAMPLE_FMT_FLTP, sampleRate, isKnown ? &m_layout : &guessed,
                            static_cast<AVSampleFormat>(m_format), m_rate, 0, nullptr);
    av_channel_layout_uninit(&guessed);
    FFmpegHandle<SwrContext> context(made);
    if (set < 0)
        return nullptr;

    // Float output is mixed without a limit unless told: two equal channels at full level gave 1.4.
    av_opt_set_double(context.get(), "rematrix_maxval", 1.0, 0);
    if (matrix == Matrix::OfOurs &&
        swr_set_matrix(context.get(), ownMatrix(m_layout).data(), m_layout.nb_channels) < 0)
        return nullptr;
    return swr_init(context.get()) < 0 ? nullptr : std::move(context);
}

int FFmpegResampler::convert(const AVFrame *frame)
{
    const int count = frame ? frame->nb_samples : 0;
    const int most = swr_get_out_samples(m_context.get(), count);
    if (most <= 0)
        return 0;
    float *room = m_sink.room(most);
    if (!room)
        fail(DecodingOutcome::NoRoom);
    auto *plane = reinterpret_cast<std::uint8_t *>(room);
    auto **samples = frame ? const_cast<const std::uint8_t **>(frame->extended_data) : nullptr;
    const int made = swr_convert(m_context.get(), &plane, most, samples, count);
    if (made <= 0)
        return 0;
    m_sink.commit(made);
    m_delivered = true;
    return made;
}

} // namespace orvane
