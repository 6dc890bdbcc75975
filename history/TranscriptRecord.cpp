#include "history/TranscriptRecord.h"

#include "base/localization/Localization.h"

#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

QString dateText(const QDateTime &date)
{
    return date.toUTC().toString(Qt::ISODate);
}

// A lone half of a surrogate pair has no UTF-8 form: the file that holds one could not be read back.
QString storable(const QString &text)
{
    return text.isValidUtf16() ? text : QString::fromUtf8(text.toUtf8());
}

void insertIfPresent(QJsonObject &object, const QString &key, const std::optional<QString> &text)
{
    if (text)
        object.insert(key, storable(*text));
}

QJsonObject objectOf(const TranscriptRecord::Segment &segment)
{
    QJsonObject object{
        {u"start"_s, segment.start}, {u"end"_s, segment.end}, {u"text"_s, storable(segment.text)}};
    if (segment.speaker)
        object.insert(u"speaker"_s, *segment.speaker);
    return object;
}

QJsonObject objectOf(const RecordEvent &event)
{
    QJsonObject object{{u"id"_s, uuidText(event.id)},
                       {u"ts"_s, dateText(event.ts)},
                       {u"kind"_s, rawValue(event.kind)},
                       {u"text"_s, storable(event.text)}};
    insertIfPresent(object, u"prompt"_s, event.prompt);
    return object;
}

QJsonObject objectOf(const SpeakerNames &names)
{
    QJsonObject object;
    for (auto name = names.cbegin(); name != names.cend(); ++name)
        object.insert(QString::number(name.key()), storable(name.value()));
    return object;
}

template <typename Item>
QJsonArray arrayOf(const QList<Item> &items)
{
    QJsonArray array;
    for (const Item &item : items)
        array.append(objectOf(item));
    return array;
}

} // namespace

QString rawValue(TranscriptKind kind)
{
    return kind == TranscriptKind::File ? u"file"_s : u"meeting"_s;
}

QString title(TranscriptKind kind)
{
    return kind == TranscriptKind::File ? Localization::text(u"Файл") : Localization::text(u"Совещание");
}

QString rawValue(RecordEvent::Kind kind)
{
    switch (kind) {
    case RecordEvent::Kind::Transcription:
        return u"transcription"_s;
    case RecordEvent::Kind::Correction:
        return u"correction"_s;
    case RecordEvent::Kind::Summary:
        return u"summary"_s;
    case RecordEvent::Kind::Prompt:
        return u"prompt"_s;
    }
    Q_UNREACHABLE();
}

QString title(RecordEvent::Kind kind)
{
    switch (kind) {
    case RecordEvent::Kind::Transcription:
        return Localization::text(u"Расшифровка");
    case RecordEvent::Kind::Correction:
        return Localization::text(u"Исправление текста");
    case RecordEvent::Kind::Summary:
        return Localization::text(u"Протокол");
    case RecordEvent::Kind::Prompt:
        return Localization::text(u"Вопрос");
    }
    Q_UNREACHABLE();
}

QByteArray TranscriptRecord::json() const
{
    QJsonObject object{{u"id"_s, uuidText(id)},           {u"kind"_s, rawValue(kind)},
                       {u"title"_s, storable(title)},     {u"createdAt"_s, dateText(createdAt)},
                       {u"modelID"_s, storable(modelID)}, {u"languageCode"_s, storable(languageCode)},
                       {u"durationMs"_s, durationMs},     {u"segments"_s, arrayOf(segments)},
                       {u"text"_s, storable(text)}};
    insertIfPresent(object, u"corrected"_s, corrected);
    insertIfPresent(object, u"audioFileName"_s, audioFileName);
    insertIfPresent(object, u"summary"_s, summary);
    insertIfPresent(object, u"sourceFilePath"_s, sourceFilePath);
    if (events)
        object.insert(u"events"_s, arrayOf(*events));
    if (!speakerNames.isEmpty())
        object.insert(u"speakerNames"_s, objectOf(speakerNames));
    return QJsonDocument(object).toJson(QJsonDocument::Indented);
}

QList<DisplaySegment> TranscriptRecord::displaySegments() const
{
    QList<DisplaySegment> display;
    display.reserve(segments.size());
    for (const Segment &segment : segments)
        display.append(
            {.start = segment.start, .end = segment.end, .text = segment.text, .speaker = segment.speaker});
    return display;
}

QList<TranscriptRecord::Segment> TranscriptRecord::segmentsFrom(const QList<DisplaySegment> &segments)
{
    QList<Segment> stored;
    stored.reserve(segments.size());
    for (const DisplaySegment &segment : segments)
        stored.append(
            {.start = segment.start, .end = segment.end, .text = segment.text, .speaker = segment.speaker});
    return stored;
}

std::optional<QUrl> TranscriptRecord::playableURL(const QString &recordingsFolder) const
{
    if (audioFileName) {
        const QFileInfo recording(recordingsFolder + u'/' + *audioFileName);
        if (recording.isFile())
            return QUrl::fromLocalFile(recording.filePath());
    }
    if (sourceFilePath && QFileInfo(*sourceFilePath).isFile())
        return QUrl::fromLocalFile(*sourceFilePath);
    return std::nullopt;
}

QString uuidText(const QUuid &id)
{
    return id.toString(QUuid::WithoutBraces).toUpper();
}

QByteArray recordFileName(const QUuid &id)
{
    return uuidText(id).toLatin1() + ".json";
}

} // namespace orvane
