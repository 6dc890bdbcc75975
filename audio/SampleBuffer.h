#pragma once

#include "audio/decoding/AudioDecoderModule.h"

#include <cstdint>
#include <deque>
#include <vector>

namespace orvane {

/// Gathers samples of unknown number without ever holding them twice: room for the expected number is
/// reserved at once, what comes beyond it goes into blocks, which are freed piece by piece as they are
/// joined. Everything it takes is made to lie in −1…1; what is not a number becomes silence.
class SampleBuffer final : public SampleSink
{
public:
    /// The most that one WAV file holds: 37 hours.
    static constexpr std::int64_t maxSamples = 2'147'483'625;

    void expect(std::int64_t count) noexcept override;
    [[nodiscard]] float *room(std::int64_t count) noexcept override;
    void commit(std::int64_t count) noexcept override;

    /// Whether room was refused because of the limit and not for lack of memory.
    [[nodiscard]] bool isTooLong() const { return m_tooLong; }

    /// All samples; the buffer is empty afterwards. May throw std::bad_alloc.
    [[nodiscard]] std::vector<float> take();

private:
    [[nodiscard]] std::vector<float> joined();

    std::deque<std::vector<float>> m_blocks;
    std::int64_t m_count = 0;
    size_t m_committed = 0; // in the last block
    bool m_tooLong = false;
};

} // namespace orvane
