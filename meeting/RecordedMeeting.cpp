#include "meeting/RecordedMeeting.h"

#include "base/localization/Localization.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QLocale>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

const QString modelKey = u"modelID"_s;
const QString languageKey = u"languageCode"_s;
const QString startKey = u"startedAt"_s;

} // namespace

QByteArray RecordedMeeting::json() const
{
    return QJsonDocument(QJsonObject{{modelKey, modelID},
                                     {languageKey, languageCode},
                                     {startKey, startedAt.toUTC().toString(Qt::ISODateWithMs)}})
        .toJson();
}

std::optional<RecordedMeeting> RecordedMeeting::fromJson(const QByteArray &json)
{
    const QJsonObject object = QJsonDocument::fromJson(json).object();
    RecordedMeeting meeting;
    meeting.modelID = object[modelKey].toString();
    meeting.languageCode = object[languageKey].toString();
    meeting.startedAt = QDateTime::fromString(object[startKey].toString(), Qt::ISODateWithMs).toLocalTime();
    if (meeting.languageCode.isEmpty() || !meeting.startedAt.isValid())
        return std::nullopt;
    return meeting;
}

TranscriptRecord recordOf(const RecordedMeeting &meeting, const QList<DisplaySegment> &segments)
{
    TranscriptRecord record;
    record.kind = TranscriptKind::Meeting;
    record.title = meetingTitle(meeting.startedAt);
    record.createdAt = meeting.startedAt.toUTC();
    record.modelID = meeting.modelID;
    record.languageCode = meeting.languageCode;
    record.durationMs = segments.isEmpty() ? meeting.durationMs : segments.last().end;
    record.segments = TranscriptRecord::segmentsFrom(segments);
    for (const DisplaySegment &segment : segments)
        record.text += segment.text;
    record.text = record.text.trimmed();
    record.audioFileName = meeting.audioFileName;
    return record;
}

QString meetingTitle(const QDateTime &startedAt)
{
    const QLocale locale(Localization::isEnglish() ? u"en_US"_s : u"ru_RU"_s);
    return Localization::text(u"Совещание") + u" · "_s + locale.toString(startedAt, u"d MMMM, HH:mm"_s);
}

} // namespace orvane
