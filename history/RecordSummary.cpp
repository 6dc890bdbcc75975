#include "history/RecordSummary.h"

namespace orvane {

namespace {

constexpr qsizetype shownCharacters = 60;

// Looks at no more of a long text than is shown of it.
QString beginningOf(const QString &text)
{
    QString beginning = text.left(2 * shownCharacters).simplified().left(shownCharacters);
    if (!beginning.isEmpty() && beginning.back().isHighSurrogate())
        beginning.chop(1);
    beginning.squeeze();
    return beginning;
}

} // namespace

RecordSummary RecordSummary::of(const TranscriptRecord &record, qint64 fileChanged)
{
    return {.id = record.id,
            .kind = record.kind,
            .title = record.title,
            .createdAt = record.createdAt,
            .durationMs = record.durationMs,
            .isCorrected = record.corrected.has_value(),
            .hasProtocol = record.summary.has_value(),
            .beginning = beginningOf(record.text),
            .fileChanged = fileChanged};
}

} // namespace orvane
