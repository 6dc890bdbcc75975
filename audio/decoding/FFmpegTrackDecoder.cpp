#include "audio/decoding/FFmpegTrackDecoder.h"

#include <cerrno>

namespace orvane {

namespace {

FFmpegHandle<AVCodecContext> openCodec(const AVStream &track)
{
    const AVCodec *codec = avcodec_find_decoder(track.codecpar->codec_id);
    if (!codec)
        fail(DecodingOutcome::UnknownCodec, avcodec_get_name(track.codecpar->codec_id));
    FFmpegHandle<AVCodecContext> context = owned(avcodec_alloc_context3(codec));
    if (const int set = avcodec_parameters_to_context(context.get(), track.codecpar); set < 0)
        failWith(set, DecodingOutcome::NotConfigured);
    context->pkt_timebase = track.time_base; // the decoder cuts the encoder's padding by it
    context->thread_count = 1;
    if (const int opened = avcodec_open2(context.get(), codec, nullptr); opened < 0)
        failWith(opened, DecodingOutcome::NotStarted);
    return context;
}

} // namespace

FFmpegTrackDecoder::FFmpegTrackDecoder(FFmpegInput &input, const AVStream &track, SampleSink &sink)
    : m_input(input),
      m_track(track),
      m_codec(openCodec(track)),
      m_packet(owned(av_packet_alloc())),
      m_frame(owned(av_frame_alloc())),
      m_resampler(sink)
{}

void FFmpegTrackDecoder::run()
{
    while (m_input.read(*m_packet, m_track))
        decode(m_packet.get());
    decode(nullptr);
    m_resampler.finish();
    requireSamples();
}

// No packet: what the decoder still holds.
void FFmpegTrackDecoder::decode(const AVPacket *packet)
{
    int done = avcodec_send_packet(m_codec.get(), packet);
    while (done >= 0) {
        done = avcodec_receive_frame(m_codec.get(), m_frame.get());
        if (done >= 0)
            resample(*m_frame);
    }
    if (done == AVERROR(ENOMEM))
        fail(DecodingOutcome::NoRoom);
    if (done != AVERROR(EAGAIN) && done != AVERROR_EOF)
        m_sawDamage = true;
}

void FFmpegTrackDecoder::resample(const AVFrame &frame)
{
    if (frame.nb_samples > 0 && m_resampler.add(frame) == FFmpegResampler::Taken::NotConfigurable)
        m_sawStrangeFrame = true;
}

void FFmpegTrackDecoder::requireSamples() const
{
    if (m_resampler.hasDelivered())
        return;
    if (m_sawStrangeFrame)
        fail(DecodingOutcome::NotConfigured);
    fail(m_sawDamage ? DecodingOutcome::Damaged : DecodingOutcome::NoSamples);
}

} // namespace orvane
