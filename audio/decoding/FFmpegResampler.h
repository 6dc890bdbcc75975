#pragma once

#include "audio/decoding/FFmpegHandles.h"

namespace orvane {

/// Turns decoded audio of any rate, layout and sample format into what the sink takes. The input may
/// change on the way.
class FFmpegResampler
{
public:
    explicit FFmpegResampler(SampleSink &sink);
    ~FFmpegResampler();
    FFmpegResampler(const FFmpegResampler &) = delete;
    FFmpegResampler &operator=(const FFmpegResampler &) = delete;

    enum class Taken { Yes, NotConfigurable };

    /// Throws DecodingFailure when the sink is full.
    [[nodiscard]] Taken add(const AVFrame &frame);

    /// Hands over what the filter still holds.
    void finish();

    /// Whether the sink got anything yet.
    [[nodiscard]] bool hasDelivered() const { return m_delivered; }

private:
    enum class Matrix { Usual, OfOurs };

    [[nodiscard]] bool fits(const AVFrame &frame) const;
    [[nodiscard]] bool configure(const AVFrame &frame);
    [[nodiscard]] FFmpegHandle<SwrContext> make(Matrix matrix);
    int convert(const AVFrame *frame);

    SampleSink &m_sink;
    FFmpegHandle<SwrContext> m_context;
    AVChannelLayout m_layout{};
    int m_format = AV_SAMPLE_FMT_NONE;
    int m_rate = 0;
    bool m_delivered = false;
};

} // namespace orvane
