#pragma once

#include "audio/decoding/FFmpegInput.h"
#include "audio/decoding/FFmpegResampler.h"

namespace orvane {

/// Decodes one track of an input from beginning to end. Throws DecodingFailure.
class FFmpegTrackDecoder
{
public:
    FFmpegTrackDecoder(FFmpegInput &input, const AVStream &track, SampleSink &sink);

    void run();

private:
    void decode(const AVPacket *packet);
    void resample(const AVFrame &frame);
    void requireSamples() const;

    FFmpegInput &m_input;
    const AVStream &m_track;
    FFmpegHandle<AVCodecContext> m_codec;
    FFmpegHandle<AVPacket> m_packet;
    FFmpegHandle<AVFrame> m_frame;
    FFmpegResampler m_resampler;
    bool m_sawDamage = false;
    bool m_sawStrangeFrame = false;
};

} // namespace orvane
