#include "history/TranscriptRecordReader.h"

#include <simdjson.h>

#include <algorithm>
#include <bitset>
#include <cmath>
#include <iterator>
#include <utility>
#include <vector>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

using Value = simdjson::ondemand::value;

struct Unreadable
{};

QString decoded(std::string_view utf8)
{
    return QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size()));
}

QString string(Value &value)
{
    return decoded(value.get_string());
}

// Also takes an integral number written with a fraction or an exponent.
qint64 integer(Value &value)
{
    const simdjson::ondemand::number number = value.get_number();
    if (number.is_int64())
        return number.get_int64();
    constexpr double limit = 0x1p63;
    const double real = number.is_double() ? number.get_double() : limit;
    if (real != std::trunc(real) || real < -limit || real >= limit)
        throw Unreadable();
    return static_cast<qint64>(real);
}

QUuid uuid(Value &value)
{
    const std::string_view text = value.get_string();
    const QUuid id = QUuid::fromString(QLatin1StringView(text.data(), static_cast<qsizetype>(text.size())));
    if (text.size() != 36 || (id.isNull() && text != "00000000-0000-0000-0000-000000000000"))
        throw Unreadable();
    return id;
}

int digits(std::string_view text, size_t position, size_t count)
{
    int number = 0;
    for (const char c : text.substr(position, count)) {
        if (c < '0' || c > '9')
            throw Unreadable();
        number = number * 10 + (c - '0');
    }
    return number;
}

// Offset from UTC in seconds: "Z" or "+03:00".
int zoneOffset(std::string_view zone)
{
    if (zone == "Z")
        return 0;
    if (zone.size() != 6 || (zone[0] != '+' && zone[0] != '-') || zone[3] != ':')
        throw Unreadable();
    const int seconds = digits(zone, 1, 2) * 3600 + digits(zone, 4, 2) * 60;
    return zone[0] == '-' ? -seconds : seconds;
}

// Whole seconds with a zone: "2025-03-03T14:05:09Z".
QDateTime date(Value &value)
{
    const std::string_view text = value.get_string();
    if (text.size() < 20 || text[4] != '-' || text[7] != '-' || text[10] != 'T' || text[13] != ':' ||
        text[16] != ':')
        throw Unreadable();
    const QDate day(digits(text, 0, 4), digits(text, 5, 2), digits(text, 8, 2));
    const QTime time(digits(text, 11, 2), digits(text, 14, 2), digits(text, 17, 2));
    if (!day.isValid() || !time.isValid())
        throw Unreadable();
    return QDateTime(day, time, Qt::UTC).addSecs(-zoneOffset(text.substr(19)));
}

TranscriptKind transcriptKind(Value &value)
{
    const std::string_view word = value.get_string();
    if (word == "file")
        return TranscriptKind::File;
    if (word == "meeting")
        return TranscriptKind::Meeting;
    throw Unreadable();
}

RecordEvent::Kind eventKind(Value &value)
{
    const QString word = string(value);
    using enum RecordEvent::Kind;
    for (const RecordEvent::Kind kind : {Transcription, Correction, Summary, Prompt}) {
        if (rawValue(kind) == word)
            return kind;
    }
    throw Unreadable();
}

template <typename Field, typename Read>
void readOptional(Value &value, std::optional<Field> &field, Read read)
{
    if (value.is_null())
        field.reset();
    else
        field = read(value);
}

/// The texts of one record. A record's text usually stands in its event too: equal ones are decoded once
/// and share their memory.
class SharedTexts
{
public:
    QString read(Value &value)
    {
        std::string_view token = value.raw_json_token();
        token = token.substr(0, token.rfind('"') + 1); // white space up to the next token belongs to it
        for (const auto &[knownToken, text] : m_known) {
            if (knownToken == token)
                return text;
        }
        m_known.emplace_back(token, string(value));
        return m_known.back().second;
    }

private:
    std::vector<std::pair<std::string_view, QString>> m_known;
};

enum class Presence { Required, Optional };

template <typename Target>
struct Field
{
    std::string_view key;
    Presence presence;
    void (*read)(Target &target, Value &value, SharedTexts &texts);
};

template <typename Target, size_t count>
void readObject(simdjson::ondemand::object object, const Field<Target> (&fields)[count], Target &target,
                SharedTexts &texts)
{
    std::bitset<count> met;
    for (auto member : object) {
        const std::string_view key = member.unescaped_key();
        const auto field = std::ranges::find(fields, key, &Field<Target>::key);
        if (field == std::end(fields))
            continue;
        Value value = member.value();
        field->read(target, value, texts);
        met.set(static_cast<size_t>(field - fields));
    }
    for (size_t i = 0; i < count; ++i) {
        if (fields[i].presence == Presence::Required && !met[i])
            throw Unreadable();
    }
}

template <typename Item, size_t count>
QList<Item> readList(Value &value, const Field<Item> (&fields)[count], SharedTexts &texts)
{
    QList<Item> items;
    for (auto element : value.get_array()) {
        items.emplaceBack();
        readObject(element.get_object(), fields, items.last(), texts);
    }
    return items;
}

using Segment = TranscriptRecord::Segment;
using enum Presence;

constexpr Field<Segment> segmentFields[] = {
    {"end", Required, [](Segment &s, Value &v, SharedTexts &) { s.end = integer(v); }},
    {"speaker", Optional, [](Segment &s, Value &v, SharedTexts &) { readOptional(v, s.speaker, integer); }},
    {"start", Required, [](Segment &s, Value &v, SharedTexts &) { s.start = integer(v); }},
    {"text", Required, [](Segment &s, Value &v, SharedTexts &) { s.text = string(v); }},
};

constexpr Field<RecordEvent> eventFields[] = {
    {"id", Required, [](RecordEvent &e, Value &v, SharedTexts &) { e.id = uuid(v); }},
    {"kind", Required, [](RecordEvent &e, Value &v, SharedTexts &) { e.kind = eventKind(v); }},
    {"prompt", Optional, [](RecordEvent &e, Value &v, SharedTexts &) { readOptional(v, e.prompt, string); }},
    {"text", Required, [](RecordEvent &e, Value &v, SharedTexts &texts) { e.text = texts.read(v); }},
    {"ts", Required, [](RecordEvent &e, Value &v, SharedTexts &) { e.ts = date(v); }},
};

void readSegments(TranscriptRecord &record, Value &value, SharedTexts &texts)
{
    record.segments = readList(value, segmentFields, texts);
}

void readEvents(TranscriptRecord &record, Value &value, SharedTexts &texts)
{
    readOptional(value, record.events, [&texts](Value &list) { return readList(list, eventFields, texts); });
}

void readCorrected(TranscriptRecord &record, Value &value, SharedTexts &texts)
{
    readOptional(value, record.corrected, [&texts](Value &text) { return texts.read(text); });
}

void readSummary(TranscriptRecord &record, Value &value, SharedTexts &texts)
{
    readOptional(value, record.summary, [&texts](Value &text) { return texts.read(text); });
}

void readSpeakerNames(TranscriptRecord &record, Value &value, SharedTexts &)
{
    for (auto member : value.get_object()) {
        bool isNumber = false;
        const qint64 speaker = decoded(member.unescaped_key()).toLongLong(&isNumber);
        if (!isNumber)
            throw Unreadable();
        Value name = member.value();
        record.speakerNames.insert(speaker, string(name));
    }
}

using Record = TranscriptRecord;

constexpr Field<Record> recordFields[] = {
    {"audioFileName", Optional,
     [](Record &r, Value &v, SharedTexts &) { readOptional(v, r.audioFileName, string); }},
    {"corrected", Optional, readCorrected},
    {"createdAt", Required, [](Record &r, Value &v, SharedTexts &) { r.createdAt = date(v); }},
    {"durationMs", Required, [](Record &r, Value &v, SharedTexts &) { r.durationMs = integer(v); }},
    {"events", Optional, readEvents},
    {"id", Required, [](Record &r, Value &v, SharedTexts &) { r.id = uuid(v); }},
    {"kind", Required, [](Record &r, Value &v, SharedTexts &) { r.kind = transcriptKind(v); }},
    {"languageCode", Required, [](Record &r, Value &v, SharedTexts &) { r.languageCode = string(v); }},
    {"modelID", Required, [](Record &r, Value &v, SharedTexts &) { r.modelID = string(v); }},
    {"segments", Required, readSegments},
    {"sourceFilePath", Optional,
     [](Record &r, Value &v, SharedTexts &) { readOptional(v, r.sourceFilePath, string); }},
    {"speakerNames", Optional, readSpeakerNames},
    {"summary", Optional, readSummary},
    {"text", Required, [](Record &r, Value &v, SharedTexts &texts) { r.text = texts.read(v); }},
    {"title", Required, [](Record &r, Value &v, SharedTexts &) { r.title = string(v); }},
};

} // namespace

struct TranscriptRecordReader::Parser
{
    simdjson::ondemand::parser parser;
    /// The text and the room behind it that the parser may read.
    QByteArray padded;

    TranscriptRecord record(QByteArrayView json);
};

TranscriptRecord TranscriptRecordReader::Parser::record(QByteArrayView json)
{
    padded.resize(json.size() + static_cast<qsizetype>(simdjson::SIMDJSON_PADDING));
    std::ranges::copy(json, padded.begin());
    simdjson::ondemand::document document = parser.iterate(
        padded.constData(), static_cast<size_t>(json.size()), static_cast<size_t>(padded.size()));

    TranscriptRecord record;
    SharedTexts texts;
    readObject(document.get_object(), recordFields, record, texts);
    if (document.current_location().error() != simdjson::OUT_OF_BOUNDS) // something follows the record
        throw Unreadable();
    return record;
}

TranscriptRecordReader::TranscriptRecordReader() : m_parser(std::make_unique<Parser>()) {}

TranscriptRecordReader::~TranscriptRecordReader() = default;

std::optional<TranscriptRecord> TranscriptRecordReader::read(QByteArrayView json)
{
    try {
        return m_parser->record(json);
    } catch (const simdjson::simdjson_error &) {
        return std::nullopt;
    } catch (const Unreadable &) {
        return std::nullopt;
    }
}

} // namespace orvane
