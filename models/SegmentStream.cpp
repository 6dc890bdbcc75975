#include "models/SegmentStream.h"

#include "models/DownloadError.h"
#include "models/DownloadState.h"
#include "models/PartFile.h"

namespace orvane {

namespace {

/// Bytes between two hints to the disk.
constexpr qint64 flushStep = 8 * 1024 * 1024;

} // namespace

SegmentStream::SegmentStream(const QUrl &url, qsizetype segment, PartFile &part, DownloadState &state,
                             std::chrono::milliseconds idleTimeout)
    : SegmentStream(url, state.meta().missing(segment), state.meta().missing(segment), segment, part, state,
                    idleTimeout)
{}

SegmentStream::SegmentStream(const QUrl &url, WholeFile comes, PartFile &part, DownloadState &state,
                             std::chrono::milliseconds idleTimeout)
    : SegmentStream(url, std::nullopt, {.start = 0, .end = state.meta().total - 1}, 0, part, state,
                    idleTimeout)
{
    m_wholeFileComes = std::move(comes);
}

SegmentStream::SegmentStream(const QUrl &url, std::optional<ByteRange> asked, ByteRange range,
                             qsizetype segment, PartFile &part, DownloadState &state,
                             std::chrono::milliseconds idleTimeout)
    : Transfer(url, asked, idleTimeout),
      m_segment(segment),
      m_part(part),
      m_state(state),
      m_range(range),
      m_offset(range.start),
      m_flushedTo(range.start)
{
    m_waiting.reserve(bufferSize);
}

void SegmentStream::answered(const DownloadAnswer &answer)
{
    if (answer.status != 200 && answer.status != 206)
        throw DownloadError::badStatus(answer.status);
    if (!m_wholeFileComes && (answer.status == 200 || (answer.etag && answer.etag != m_state.meta().etag)))
        throw RangesDiffer();
    if (answer.isEncoded || answer.contentLength.value_or(m_range.length()) != m_range.length())
        throw DownloadError::fileChanged();
    const auto &given = answer.contentRange;
    const bool isAsked = given && given->range == m_range && given->total == m_state.meta().total;
    const bool isWholeFile = m_wholeFileComes && answer.status == 200;
    if (!isAsked && !isWholeFile)
        throw DownloadError::fileChanged();
    if (m_wholeFileComes)
        m_wholeFileComes(answer.etag);
}

void SegmentStream::received(std::span<const char> bytes)
{
    const qint64 missing = m_range.end + 1 - m_offset - std::ssize(m_waiting);
    if (std::ssize(bytes) > missing) {
        // What does not keep to the length that was asked for may not be the file in the other segments
        // either.
        m_waiting.clear();
        m_state.distrust();
        throw DownloadError::fileChanged();
    }
    if (m_waiting.size() + bytes.size() > bufferSize)
        flush();
    m_waiting.insert(m_waiting.end(), bytes.begin(), bytes.end());
}

void SegmentStream::flush()
{
    if (m_waiting.empty())
        return;
    const qint64 count = std::ssize(m_waiting);
    m_part.write(m_offset, m_waiting);
    m_waiting.clear();
    m_offset += count;
    m_state.add(count, m_segment);
    if (m_offset - m_flushedTo >= flushStep) {
        m_part.startFlush(m_flushedTo, m_offset - m_flushedTo);
        m_flushedTo = m_offset;
    }
}

void SegmentStream::ended()
{
    flush();
    if (m_offset != m_range.end + 1)
        throw DownloadError::truncated(m_state.meta().totalWritten(), m_state.meta().total);
}

} // namespace orvane
