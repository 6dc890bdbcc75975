#include "app/commandline/RecordText.h"

#include "base/localization/Localization.h"

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

QString section(const QString &title, const QString &content)
{
    return u"\n── %1 ──\n%2\n"_s.arg(title, content.trimmed());
}

QString transcript(const TranscriptRecord &record)
{
    if (record.segments.isEmpty())
        return record.text.trimmed() + u'\n';
    QString text;
    for (const TranscriptRecord::Segment &segment : record.segments)
        text += timecodeOf(segment.start).rightJustified(8) + u"  "_s + segment.text.trimmed() + u'\n';
    return text;
}

QString questions(const QList<RecordEvent> &events)
{
    QString text;
    for (const RecordEvent &event : events) {
        if (event.kind == RecordEvent::Kind::Prompt)
            text += section(event.prompt.value_or(QString()).trimmed(), event.text);
    }
    return text;
}

QString log(const QList<RecordEvent> &events)
{
    QString lines;
    for (const RecordEvent &event : events)
        lines += u"%1  %2\n"_s.arg(shownTime(event.ts), title(event.kind));
    return lines;
}

} // namespace

QString shownTime(const QDateTime &moment)
{
    return moment.toLocalTime().toString(u"yyyy-MM-dd HH:mm"_s);
}

QString readable(const TranscriptRecord &record)
{
    QString text = record.title + u'\n';
    text +=
        u"%1 · %2 · %3 · %4 · %5\n"_s.arg(title(record.kind), shownTime(record.createdAt),
                                          timecodeOf(record.durationMs), record.modelID, record.languageCode);
    if (record.sourceFilePath)
        text += *record.sourceFilePath + u'\n';
    text += u'\n' + transcript(record);
    if (record.corrected)
        text += section(Localization::text(u"Исправленный текст"), *record.corrected);
    if (record.summary)
        text += section(Localization::text(u"Протокол"), *record.summary);
    const QList<RecordEvent> events = record.events.value_or(QList<RecordEvent>());
    text += questions(events);
    if (events.size() > 1)
        text += section(Localization::text(u"Что сделано"), log(events));
    return text;
}

} // namespace orvane
