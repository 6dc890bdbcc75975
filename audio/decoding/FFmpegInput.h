#pragma once

#include "audio/decoding/FFmpegHandles.h"

#include <cstdint>
#include <optional>

namespace orvane {

/// A media file opened for reading packets. Reads the source and nothing else: whatever a file asks to
/// open beside itself is refused. Throws DecodingFailure.
class FFmpegInput
{
public:
    explicit FFmpegInput(MediaSource &source);
    FFmpegInput(const FFmpegInput &) = delete;
    FFmpegInput &operator=(const FFmpegInput &) = delete;

    /// The track that counts. Packets of all others are skipped from here on.
    [[nodiscard]] AVStream &selectAudioTrack();

    /// Milliseconds; none when the file does not tell.
    [[nodiscard]] std::optional<std::int64_t> duration(const AVStream &track) const;
    /// Whether the duration is what the file says, not a guess from its size.
    [[nodiscard]] bool isDurationReported(const AVStream &track) const;

    /// The next packet of a track; false at the end, also where the file breaks off.
    [[nodiscard]] bool read(AVPacket &packet, const AVStream &track);

    /// After the last packet: whether much more of the track should have come.
    [[nodiscard]] bool isCutShort(const AVStream &track) const;

private:
    static int readBytes(void *input, std::uint8_t *buffer, int size);
    static std::int64_t seekBytes(void *input, std::int64_t offset, int whence);
    static int refuseToOpen(AVFormatContext *context, AVIOContext **, const char *, int, AVDictionary **);
    static int isInterrupted(void *input);

    void open();
    [[nodiscard]] std::int64_t announced(const AVStream &track) const;
    void note(const AVPacket &packet, const AVStream &track);

    MediaSource &m_source;
    std::int64_t m_position = 0;
    bool m_refused = false;
    bool m_failed = false;
    /// Milliseconds of the track that the packets so far reach to; none while they tell no time.
    std::optional<std::int64_t> m_reached;
    FFmpegHandle<AVIOContext> m_bytes;
    FFmpegHandle<AVFormatContext> m_format;
};

} // namespace orvane
