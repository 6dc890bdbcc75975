#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <optional>

namespace orvane {

/// Bytes of a file, both ends included.
struct ByteRange
{
    qint64 start = 0;
    qint64 end = -1;

    [[nodiscard]] qint64 length() const { return end - start + 1; }

    bool operator==(const ByteRange &) const = default;
};

/// How far the download of one file has come: the resume record, stored as JSON beside the partial file.
struct DownloadMeta
{
    /// The server's entity tag without "W/" and quotes; none when it gives none.
    std::optional<QString> etag;
    /// Size of the file in bytes.
    qint64 total = 0;
    /// First and last byte of each segment, and how many of its bytes lie in the partial file.
    QList<qint64> starts;
    QList<qint64> ends;
    QList<qint64> written;
    /// The system's start during which the bytes were written, as long as some of them may be in memory
    /// only: after another start they are not to be trusted. None once all of them are on the disk.
    std::optional<QString> bootID;

    [[nodiscard]] static DownloadMeta fresh(std::optional<QString> etag, const QList<ByteRange> &segments);

    /// None when the bytes are not a record. A record may still be inconsistent.
    [[nodiscard]] static std::optional<DownloadMeta> fromJson(const QByteArray &json);
    [[nodiscard]] static std::optional<DownloadMeta> fromFile(const QString &path);
    [[nodiscard]] QByteArray toJson() const;

    /// The lists have the same length, not 0, and each `written` lies within its segment.
    [[nodiscard]] bool isConsistent() const;

    /// The segments are those that a file of this size is fetched in, or the whole file as one.
    [[nodiscard]] bool isOfWholeFile() const;

    [[nodiscard]] qsizetype segmentCount() const { return starts.size(); }
    [[nodiscard]] ByteRange segment(qsizetype index) const { return {starts[index], ends[index]}; }
    [[nodiscard]] QList<ByteRange> segments() const;
    /// What of the segment is still missing; its length is 0 when nothing is.
    [[nodiscard]] ByteRange missing(qsizetype index) const;
    [[nodiscard]] qint64 totalWritten() const;
    /// The size that a partial file holding the written bytes has at least.
    [[nodiscard]] qint64 minFileSize() const;

    bool operator==(const DownloadMeta &) const = default;
};

/// The ranges of a file of `total` bytes, at least 1: the larger, the more, up to six.
[[nodiscard]] QList<ByteRange> splitSegments(qint64 total);

} // namespace orvane
