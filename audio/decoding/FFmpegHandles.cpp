#include "audio/decoding/FFmpegHandles.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace orvane {

void fail(DecodingOutcome outcome, const char *detail)
{
    DecodingFailure failure{.result = {.outcome = outcome, .detail = {}, .isCutShort = false}};
    const size_t length = std::min(std::strlen(detail), failure.result.detail.size() - 1);
    std::copy_n(detail, length, failure.result.detail.begin());
    throw failure;
}

void failWith(int error, DecodingOutcome usual)
{
    if (error == AVERROR_EXIT)
        fail(DecodingOutcome::Cancelled);
    fail(error == AVERROR(ENOMEM) ? DecodingOutcome::NoRoom : usual);
}

} // namespace orvane
