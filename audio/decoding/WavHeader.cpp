#include "audio/decoding/WavHeader.h"

#include <array>
#include <cstring>

namespace orvane {

namespace {

constexpr std::int64_t riffBytes = 12;
constexpr std::int64_t chunkHeaderBytes = 8;
/// Programs that do not know the length when they begin write this, or something a little larger.
constexpr std::int64_t unknownFrom = 0x7FFF'F000;

std::int64_t littleEndian(const std::byte *bytes)
{
    std::int64_t number = 0;
    for (int i = 3; i >= 0; --i)
        number = number << 8 | std::to_integer<std::int64_t>(bytes[i]);
    return number;
}

bool isNamed(const std::byte *bytes, const char *name)
{
    return std::memcmp(bytes, name, 4) == 0;
}

} // namespace

std::optional<std::int64_t> announcedWavBytes(MediaSource &source)
{
    std::array<std::byte, riffBytes> riff{};
    if (source.read(0, riff.data(), riffBytes) != riffBytes || !isNamed(riff.data(), "RIFF") ||
        !isNamed(riff.data() + 8, "WAVE"))
        return std::nullopt;
    std::array<std::byte, chunkHeaderBytes> chunk{};
    std::int64_t position = riffBytes;
    while (!source.isCancelled() &&
           source.read(position, chunk.data(), chunkHeaderBytes) == chunkHeaderBytes) {
        const std::int64_t size = littleEndian(chunk.data() + 4);
        if (isNamed(chunk.data(), "data"))
            return size > 0 && size < unknownFrom ? std::optional(size) : std::nullopt;
        position += chunkHeaderBytes + size + size % 2;
    }
    return std::nullopt;
}

} // namespace orvane
