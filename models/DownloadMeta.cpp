#include "models/DownloadMeta.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <numeric>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

constexpr qint64 mebibyte = 1024 * 1024;
/// In bytes. A record of six segments has a few hundred.
constexpr qint64 maxRecordSize = 64 * 1024;

std::optional<qint64> integer(const QJsonValue &value)
{
    // A fraction or a number beyond 64 bits is no integer: toInteger gives the default for both.
    const qint64 number = value.toInteger(-1);
    if (number == -1 && value.toInteger(0) != -1)
        return std::nullopt;
    return number;
}

std::optional<QList<qint64>> integers(const QJsonValue &value)
{
    if (!value.isArray())
        return std::nullopt;
    QList<qint64> numbers;
    for (const QJsonValue &element : value.toArray()) {
        const auto number = integer(element);
        if (!number)
            return std::nullopt;
        numbers.append(*number);
    }
    return numbers;
}

bool isOptionalString(const QJsonValue &value)
{
    return value.isString() || value.isUndefined();
}

std::optional<QString> optionalString(const QJsonValue &value)
{
    return value.isString() ? std::optional(value.toString()) : std::nullopt;
}

QJsonArray toArray(const QList<qint64> &numbers)
{
    QJsonArray array;
    std::ranges::copy(numbers, std::back_inserter(array));
    return array;
}

} // namespace

DownloadMeta DownloadMeta::fresh(std::optional<QString> etag, const QList<ByteRange> &segments)
{
    DownloadMeta meta;
    meta.etag = std::move(etag);
    meta.total = segments.last().end + 1;
    for (const ByteRange &segment : segments) {
        meta.starts.append(segment.start);
        meta.ends.append(segment.end);
        meta.written.append(0);
    }
    return meta;
}

std::optional<DownloadMeta> DownloadMeta::fromJson(const QByteArray &json)
{
    const QJsonDocument document = QJsonDocument::fromJson(json);
    if (!document.isObject())
        return std::nullopt;
    const QJsonObject record = document.object();

    const auto total = integer(record["total"_L1]);
    auto starts = integers(record["starts"_L1]);
    auto ends = integers(record["ends"_L1]);
    auto written = integers(record["written"_L1]);
    const QJsonValue etag = record["etag"_L1];
    const QJsonValue bootID = record["bootID"_L1];
    if (!total || !starts || !ends || !written || !isOptionalString(etag) || !isOptionalString(bootID))
        return std::nullopt;
    return DownloadMeta{.etag = optionalString(etag),
                        .total = *total,
                        .starts = *std::move(starts),
                        .ends = *std::move(ends),
                        .written = *std::move(written),
                        .bootID = optionalString(bootID)};
}

std::optional<DownloadMeta> DownloadMeta::fromFile(const QString &path)
{
    QFile file(path);
    if (!file.open(QFile::ReadOnly))
        return std::nullopt;
    return fromJson(file.read(maxRecordSize));
}

QByteArray DownloadMeta::toJson() const
{
    QJsonObject record{{u"total"_s, total},
                       {u"starts"_s, toArray(starts)},
                       {u"ends"_s, toArray(ends)},
                       {u"written"_s, toArray(written)}};
    if (etag)
        record[u"etag"_s] = *etag;
    if (bootID)
        record[u"bootID"_s] = *bootID;
    return QJsonDocument(record).toJson();
}

bool DownloadMeta::isConsistent() const
{
    if (starts.isEmpty() || starts.size() != ends.size() || starts.size() != written.size())
        return false;
    for (qsizetype i = 0; i < starts.size(); ++i) {
        // Written so that no number, however large, overflows.
        if (starts[i] < 0 || ends[i] < starts[i] || written[i] < 0 || written[i] - 1 > ends[i] - starts[i])
            return false;
    }
    return true;
}

bool DownloadMeta::isOfWholeFile() const
{
    return total > 0 &&
           (segments() == splitSegments(total) || segments() == QList<ByteRange>{{0, total - 1}});
}

QList<ByteRange> DownloadMeta::segments() const
{
    QList<ByteRange> ranges;
    for (qsizetype i = 0; i < segmentCount(); ++i)
        ranges.append(segment(i));
    return ranges;
}

ByteRange DownloadMeta::missing(qsizetype index) const
{
    return {starts[index] + written[index], ends[index]};
}

qint64 DownloadMeta::totalWritten() const
{
    return std::accumulate(written.begin(), written.end(), qint64(0));
}

qint64 DownloadMeta::minFileSize() const
{
    qint64 size = 0;
    for (qsizetype i = 0; i < segmentCount(); ++i) {
        if (written[i] > 0)
            size = std::max(size, starts[i] + written[i]);
    }
    return size;
}

QList<ByteRange> splitSegments(qint64 total)
{
    const qint64 count = total < 32 * mebibyte    ? 1
                         : total < 128 * mebibyte ? 2
                         : total < 512 * mebibyte ? 4
                                                  : 6;
    const qint64 length = total / count;
    QList<ByteRange> ranges;
    for (qint64 i = 0; i < count; ++i)
        ranges.append({i * length, i == count - 1 ? total - 1 : (i + 1) * length - 1});
    return ranges;
}

} // namespace orvane
