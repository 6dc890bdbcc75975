#pragma once

extern "C" {
#include <libswresample/swresample.h>
}

#include <memory>
#include <span>
#include <vector>

namespace orvane {

/// Turns what a device gives (32-bit float, interleaved) into mono at 16 kHz in −1…1. The channels are
/// averaged: of a microphone's channels nobody knows where they belong. Buffers are reused.
class InputConverter
{
public:
    /// Throws std::bad_alloc.
    InputConverter(int rate, int channels);

    /// Whole frames in; what has become ready out, valid until the next call.
    [[nodiscard]] std::span<const float> convert(std::span<const float> interleaved);

    /// What the filter still holds; nothing can be converted afterwards.
    [[nodiscard]] std::span<const float> finish();

private:
    struct Deleter
    {
        void operator()(SwrContext *context) const { swr_free(&context); }
    };

    [[nodiscard]] std::span<const float> resample(const float *samples, int count);

    int m_channels;
    std::unique_ptr<SwrContext, Deleter> m_context;
    std::vector<float> m_mixed;
    std::vector<float> m_converted;
};

} // namespace orvane
