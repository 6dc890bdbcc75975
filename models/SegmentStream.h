#pragma once

#include "models/Transfer.h"

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
    /// `WholeFile` is for a server that gives no ranges: the one answer is then the file from its start.
    enum class Answer { Range, WholeFile };

    /// The part and the state outlive the stream.
    SegmentStream(const QUrl &url, Answer answer, qsizetype segment, PartFile &part, DownloadState &state,
                  std::chrono::milliseconds idleTimeout);

    /// Writes what has arrived. Nothing that has is kept back longer than until the end of a round.
    void flush();

protected:
    void answered(const DownloadAnswer &answer) override;
    void received(std::span<const char> bytes) override;
    void ended() override;

private:
    const Answer m_answer;
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
