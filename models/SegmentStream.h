#pragma once

#include "models/Transfer.h"

#include <functional>
#include <vector>

namespace orvane {

class DownloadState;
class PartFile;

/// The server has answered a request for a range with the whole file, or with a part of a file of another
/// entity tag, as the mirrors behind one address may: the file cannot be put together from ranges.
struct RangesDiffer
{};

/// Brings what is missing of one segment into its place in the partial file. Only bytes of the very range
/// and file that were asked for are written; anything else throws DownloadError or RangesDiffer.
class SegmentStream : public Transfer
{
public:
    /// Called when the server begins to send the whole file, of that tag, in place of all that is there.
    using WholeFile = std::function<void(const std::optional<QString> &etag)>;

    /// What is missing of that segment. The part and the state outlive the stream.
    SegmentStream(const QUrl &url, qsizetype segment, PartFile &part, DownloadState &state,
                  std::chrono::milliseconds idleTimeout);
    /// The whole file as the one segment, which the state has from `comes` on.
    SegmentStream(const QUrl &url, WholeFile comes, PartFile &part, DownloadState &state,
                  std::chrono::milliseconds idleTimeout);

    /// Writes what has arrived. Nothing that has is kept back longer than until the end of a round.
    void flush();

protected:
    void answered(const DownloadAnswer &answer) override;
    void received(std::span<const char> bytes) override;
    void ended() override;

private:
    SegmentStream(const QUrl &url, std::optional<ByteRange> asked, ByteRange range, qsizetype segment,
                  PartFile &part, DownloadState &state, std::chrono::milliseconds idleTimeout);

    /// None when a range is asked for.
    WholeFile m_wholeFileComes;
    const qsizetype m_segment;
    PartFile &m_part;
    DownloadState &m_state;
    const ByteRange m_range;
    /// Where the next bytes belong, without those that wait.
    qint64 m_offset;
    qint64 m_flushedTo;
    std::vector<char> m_waiting;
};

} // namespace orvane
