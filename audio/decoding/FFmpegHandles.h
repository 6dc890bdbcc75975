#pragma once

#include "audio/decoding/AudioDecoderModule.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libswresample/swresample.h>
}

#include <memory>

namespace orvane {

struct FFmpegDeleter
{
    void operator()(AVFrame *frame) const { av_frame_free(&frame); }
    void operator()(AVPacket *packet) const { av_packet_free(&packet); }
    void operator()(AVCodecContext *context) const { avcodec_free_context(&context); }
    void operator()(AVFormatContext *context) const { avformat_close_input(&context); }
    void operator()(SwrContext *context) const { swr_free(&context); }
    void operator()(AVIOContext *context) const
    {
        av_free(context->buffer);
        avio_context_free(&context);
    }
};

/// Something that FFmpeg made, freed with this.
template <typename Thing>
using FFmpegHandle = std::unique_ptr<Thing, FFmpegDeleter>;

/// Thrown and caught inside the module only.
struct DecodingFailure
{
    DecodingResult result;
};

[[noreturn]] void fail(DecodingOutcome outcome, const char *detail = "");

/// The failure that an FFmpeg error code stands for: `usual`, unless the file is not to blame.
[[noreturn]] void failWith(int error, DecodingOutcome usual);

/// What FFmpeg has just allocated; throws when it could not.
template <typename Thing>
[[nodiscard]] FFmpegHandle<Thing> owned(Thing *thing)
{
    if (!thing)
        fail(DecodingOutcome::NoRoom);
    return FFmpegHandle<Thing>(thing);
}

} // namespace orvane
