#include "transcript/TranscriptSanitizer.h"

namespace orvane::TranscriptSanitizer {

QList<DisplaySegment> collapseRepeats(const QList<DisplaySegment> &segments, int keep)
{
    if (keep >= segments.size())
        return segments;

    QList<DisplaySegment> kept;
    QString previousKey;
    int run = 0;
    for (const DisplaySegment &segment : segments) {
        const QString key = segment.text.trimmed().toLower();
        run = (key == previousKey && !key.isEmpty()) ? run + 1 : 1;
        previousKey = key;
        if (run <= keep)
            kept.append(segment);
    }
    return kept;
}

} // namespace orvane::TranscriptSanitizer
