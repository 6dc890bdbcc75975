#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace orvane {

// What the program and its decoding module share. No exception and no ownership crosses this border:
// the program lends a source and a sink for the time of one call.

/// Bytes of the file to decode.
class MediaSource
{
public:
    /// Fills the buffer from `position` on: the bytes read, 0 at the end, −1 when reading failed.
    virtual std::int64_t read(std::int64_t position, std::byte *buffer, std::int64_t size) noexcept = 0;
    [[nodiscard]] virtual std::int64_t size() const noexcept = 0;
    /// The file name's ending without the dot, letters and digits only; some formats show in nothing else.
    [[nodiscard]] virtual const char *suffix() const noexcept = 0;
    [[nodiscard]] virtual bool isCancelled() const noexcept = 0;

protected:
    ~MediaSource() = default;
};

/// Takes mono 32-bit float samples at 16 kHz, in order.
class SampleSink
{
public:
    /// About how many samples will come; reported at most once, before the first.
    virtual void expect(std::int64_t count) noexcept = 0;
    /// Where the next samples go: room for `count`, or null when there is none.
    [[nodiscard]] virtual float *room(std::int64_t count) noexcept = 0;
    /// The first `count` places of the room are filled.
    virtual void commit(std::int64_t count) noexcept = 0;

protected:
    ~SampleSink() = default;
};

enum class DecodingOutcome {
    Decoded,
    Cancelled,
    /// No known format, or damaged where the format is determined.
    NotMedia,
    /// The file only names other files or addresses; those are never opened.
    RefersElsewhere,
    NoAudioTrack,
    /// The detail is the name of the track's codec.
    UnknownCodec,
    NotConfigured,
    NotStarted,
    /// There is data, but nothing of it can be decoded.
    Damaged,
    NoSamples,
    /// The sink gave no room, or the decoder ran out of memory.
    NoRoom,
};

struct DecodingResult
{
    DecodingOutcome outcome = DecodingOutcome::Decoded;
    /// UTF-8, ends with a zero.
    std::array<char, 128> detail{};
    /// Decoded, but the file could be read to a place well before its end only.
    bool isCutShort = false;
};

/// Reads media files with libraries that the program itself does not load. Stateless, any thread.
class AudioDecoderModule
{
public:
    /// Puts the first audio track into the sink, mixed down and resampled. What the sink got counts only
    /// with the outcome Decoded. A file that ends early or is damaged from some place on ends there; packets
    /// that cannot be decoded are left out as long as others can.
    virtual DecodingResult decode(MediaSource &source, SampleSink &sink) const noexcept = 0;

    /// Milliseconds of the first audio track as the file tells, −1 when it does not.
    virtual std::int64_t duration(MediaSource &source) const noexcept = 0;

protected:
    ~AudioDecoderModule() = default;
};

/// The module's one exported function. Its name changes with what stands above.
using AudioDecoderModuleEntry = const AudioDecoderModule *();
inline constexpr char audioDecoderModuleEntryName[] = "orvaneAudioDecoderModule2";

} // namespace orvane
