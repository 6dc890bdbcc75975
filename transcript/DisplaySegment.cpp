#include "transcript/DisplaySegment.h"

using namespace Qt::StringLiterals;

namespace orvane {

DisplaySegment DisplaySegment::from(const RawSegment &raw)
{
    return {.start = raw.start, .end = raw.end, .text = raw.text, .speaker = std::nullopt};
}

QList<DisplaySegment> DisplaySegment::from(const QList<RawSegment> &raw)
{
    QList<DisplaySegment> segments;
    segments.reserve(raw.size());
    for (const RawSegment &segment : raw)
        segments.append(from(segment));
    return segments;
}

QString DisplaySegment::timecode() const
{
    return timecodeOf(start);
}

QString joinedText(const QList<DisplaySegment> &segments)
{
    QString text;
    for (const DisplaySegment &segment : segments)
        text += segment.text;
    return text;
}

QString timecodeOf(qint64 milliseconds)
{
    const qint64 seconds = milliseconds / 1000;
    const qint64 hours = seconds / 3600;
    const qint64 minutes = seconds % 3600 / 60;
    const QChar zero = u'0';
    if (hours == 0)
        return u"%1:%2"_s.arg(minutes).arg(seconds % 60, 2, 10, zero);
    return u"%1:%2:%3"_s.arg(hours).arg(minutes, 2, 10, zero).arg(seconds % 60, 2, 10, zero);
}

} // namespace orvane
