#include "audio/decoding/FFmpegInput.h"

#include "audio/decoding/WavHeader.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <span>
#include <string>

namespace orvane {

namespace {

constexpr int bufferBytes = 64 * 1024;
constexpr AVRational milliseconds{1, 1000};
// A reported length can be wrong by some packets, or by a whole second.
constexpr std::int64_t lengthTolerance = 3000;

bool isSound(const AVStream &stream)
{
    return stream.codecpar->codec_type == AVMEDIA_TYPE_AUDIO &&
           (stream.disposition & AV_DISPOSITION_ATTACHED_PIC) == 0;
}

std::span<AVStream *const> streams(const AVFormatContext &format)
{
    return {format.streams, format.nb_streams};
}

} // namespace

FFmpegInput::FFmpegInput(MediaSource &source) : m_source(source)
{
    auto *buffer = static_cast<unsigned char *>(av_malloc(bufferBytes));
    if (!buffer)
        fail(DecodingOutcome::NoRoom);
    AVIOContext *bytes = avio_alloc_context(buffer, bufferBytes, 0, this, readBytes, nullptr, seekBytes);
    if (!bytes)
        av_free(buffer);
    m_bytes = owned(bytes);
    open();
}

void FFmpegInput::open()
{
    FFmpegHandle<AVFormatContext> format = owned(avformat_alloc_context());
    format->pb = m_bytes.get();
    format->opaque = this;
    format->io_open = refuseToOpen;
    format->interrupt_callback = {isInterrupted, this};
    // No protocol has that name, so inputs nested in this one can use none.
    format->protocol_whitelist = av_strdup("none");

    // A name of our own: neither a protocol nor a pattern of picture names can be read out of it.
    const std::string name = std::string("media.") + m_source.suffix();
    AVFormatContext *opening = format.release(); // freed by the call when it fails
    const int opened = avformat_open_input(&opening, name.c_str(), nullptr, nullptr);
    m_format.reset(opening);
    if (m_source.isCancelled())
        fail(DecodingOutcome::Cancelled);
    if (opened < 0)
        m_refused ? fail(DecodingOutcome::RefersElsewhere) : failWith(opened, DecodingOutcome::NotMedia);

    // Its failure alone says nothing: tracks that are known well enough still decode.
    avformat_find_stream_info(m_format.get(), nullptr);
    if (m_source.isCancelled())
        fail(DecodingOutcome::Cancelled);
}

AVStream &FFmpegInput::selectAudioTrack()
{
    const auto all = streams(*m_format);
    const auto sound = std::ranges::find_if(all, [](const AVStream *stream) { return isSound(*stream); });
    if (sound == all.end())
        fail(m_refused ? DecodingOutcome::RefersElsewhere : DecodingOutcome::NoAudioTrack);
    for (AVStream *stream : all)
        stream->discard = stream == *sound ? AVDISCARD_DEFAULT : AVDISCARD_ALL;
    return **sound;
}

std::optional<std::int64_t> FFmpegInput::duration(const AVStream &track) const
{
    std::int64_t found = 0;
    if (track.duration != AV_NOPTS_VALUE)
        found = av_rescale_q(track.duration, track.time_base, milliseconds);
    else if (m_format->duration != AV_NOPTS_VALUE)
        found = av_rescale_q(m_format->duration, AVRational{1, AV_TIME_BASE}, milliseconds);
    found = std::max(found, announced(track));
    return found > 0 ? std::optional(found) : std::nullopt;
}

// In milliseconds; 0 where the library's is all that is known.
std::int64_t FFmpegInput::announced(const AVStream &track) const
{
    const AVCodecParameters &sound = *track.codecpar;
    const int bits = av_get_exact_bits_per_sample(sound.codec_id) * sound.ch_layout.nb_channels;
    if (std::strcmp(m_format->iformat->name, "wav") != 0 || bits <= 0 || bits != sound.block_align * 8 ||
        sound.sample_rate <= 0)
        return 0;
    const std::int64_t bytes = announcedWavBytes(m_source).value_or(0);
    return av_rescale(bytes / sound.block_align, 1000, sound.sample_rate);
}

bool FFmpegInput::isDurationReported(const AVStream &track) const
{
    return m_format->duration_estimation_method != AVFMT_DURATION_FROM_BITRATE || announced(track) > 0;
}

bool FFmpegInput::read(AVPacket &packet, const AVStream &track)
{
    while (!m_source.isCancelled()) {
        av_packet_unref(&packet);
        const int got = av_read_frame(m_format.get(), &packet);
        if (got == AVERROR(ENOMEM))
            fail(DecodingOutcome::NoRoom);
        if (got < 0 && got != AVERROR(EAGAIN) && !m_source.isCancelled()) {
            m_failed = got != AVERROR_EOF;
            return false;
        }
        if (got >= 0 && packet.stream_index == track.index) {
            note(packet, track);
            return true;
        }
    }
    fail(DecodingOutcome::Cancelled);
}

void FFmpegInput::note(const AVPacket &packet, const AVStream &track)
{
    if (packet.pts == AV_NOPTS_VALUE)
        return;
    const std::int64_t start = track.start_time == AV_NOPTS_VALUE ? 0 : track.start_time;
    const std::int64_t end =
        av_rescale_q(packet.pts + packet.duration - start, track.time_base, milliseconds);
    m_reached = std::max(m_reached.value_or(0), end);
}

bool FFmpegInput::isCutShort(const AVStream &track) const
{
    // A container's length may be that of another track: it counts where reading broke off only.
    const bool isOfTrack = track.duration != AV_NOPTS_VALUE || m_format->nb_streams == 1;
    const bool isReportedOfTrack = isOfTrack && isDurationReported(track);
    const std::optional<std::int64_t> length = m_failed || isReportedOfTrack ? duration(track) : std::nullopt;
    if (!length || !m_reached)
        return m_failed;
    return *m_reached + lengthTolerance < *length;
}

int FFmpegInput::readBytes(void *input, std::uint8_t *buffer, int size)
{
    auto &self = *static_cast<FFmpegInput *>(input);
    if (self.m_source.isCancelled())
        return AVERROR_EXIT;
    const std::int64_t got = self.m_source.read(self.m_position, reinterpret_cast<std::byte *>(buffer), size);
    if (got <= 0)
        return got < 0 ? AVERROR(EIO) : AVERROR_EOF;
    self.m_position += got;
    return int(got);
}

std::int64_t FFmpegInput::seekBytes(void *input, std::int64_t offset, int whence)
{
    auto &self = *static_cast<FFmpegInput *>(input);
    const std::int64_t size = self.m_source.size();
    std::int64_t base = 0;
    switch (whence & ~AVSEEK_FORCE) {
    case AVSEEK_SIZE:
        return size;
    case SEEK_CUR:
        base = self.m_position;
        break;
    case SEEK_END:
        base = size;
        break;
    default:
        break;
    }
    std::int64_t position = 0;
    if (__builtin_add_overflow(base, offset, &position) || position < 0)
        return AVERROR(EINVAL);
    self.m_position = position;
    return position;
}

int FFmpegInput::refuseToOpen(AVFormatContext *context, AVIOContext **, const char *, int, AVDictionary **)
{
    if (context->opaque)
        static_cast<FFmpegInput *>(context->opaque)->m_refused = true;
    return AVERROR(EPERM);
}

int FFmpegInput::isInterrupted(void *input)
{
    return static_cast<FFmpegInput *>(input)->m_source.isCancelled() ? 1 : 0;
}

} // namespace orvane
