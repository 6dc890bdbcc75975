#include "audio/SampleRate.h"
#include "audio/decoding/FFmpegTrackDecoder.h"

#include <new>

namespace orvane {

namespace {

class FFmpegDecoderModule final : public AudioDecoderModule
{
public:
    // The libraries would write about every oddity of a file to standard error.
    FFmpegDecoderModule() { av_log_set_level(AV_LOG_QUIET); }

    DecodingResult decode(MediaSource &source, SampleSink &sink) const noexcept override
    {
        try {
            FFmpegInput input(source);
            const AVStream &track = input.selectAudioTrack();
            if (const auto length = input.duration(track); length && input.isDurationReported(track))
                sink.expect(*length * sampleRate / 1000);
            FFmpegTrackDecoder(input, track, sink).run();
            return {.outcome = DecodingOutcome::Decoded, .detail = {}, .isCutShort = input.isCutShort(track)};
        } catch (const DecodingFailure &failure) {
            return failure.result;
        } catch (const std::bad_alloc &) {
            return {.outcome = DecodingOutcome::NoRoom, .detail = {}, .isCutShort = false};
        }
    }

    std::int64_t duration(MediaSource &source) const noexcept override
    {
        try {
            FFmpegInput input(source);
            return input.duration(input.selectAudioTrack()).value_or(-1);
        } catch (const DecodingFailure &) {
            return -1;
        } catch (const std::bad_alloc &) {
            return -1;
        }
    }
};

} // namespace

} // namespace orvane

extern "C" __attribute__((visibility("default"))) const orvane::AudioDecoderModule *
orvaneAudioDecoderModule2()
{
    static const orvane::FFmpegDecoderModule module;
    return &module;
}
