#include "history/TranscriptRecord.h"

#include "history/TranscriptRecordReader.h"
#include "tests/history/Samples.h"
#include "tests/support/Rows.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;
using namespace orvane;
using namespace orvane::test;

namespace {

const char fullForm[] = R"({
    "audioFileName": "Совещание 2025-03-03 14.05.09.wav",
    "corrected": "Привет! Пока.",
    "createdAt": "2025-03-03T14:05:09Z",
    "durationMs": 7500,
    "events": [
        {
            "id": "11111111-2222-4333-8444-555555555555",
            "kind": "prompt",
            "prompt": "Кто был?",
            "text": "Двое.",
            "ts": "2025-03-03T14:06:09Z"
        }
    ],
    "id": "0A1B2C3D-4E5F-4607-8899-AABBCCDDEEFF",
    "kind": "meeting",
    "languageCode": "ru",
    "modelID": "base",
    "segments": [
        {
            "end": 4000,
            "speaker": 1,
            "start": 0,
            "text": " Привет."
        },
        {
            "end": 7500,
            "start": 4000,
            "text": " Пока."
        }
    ],
    "sourceFilePath": "/home/user/встреча.mp4",
    "summary": "Поздоровались.",
    "text": "Привет. Пока.",
    "title": "Планёрка / «среда»"
}
)";

std::optional<TranscriptRecord> read(const QByteArray &json)
{
    return TranscriptRecordReader().read(json);
}

QByteArray fullFormWith(const QByteArray &part, const QByteArray &replacement)
{
    QByteArray json(fullForm);
    const qsizetype place = json.indexOf(part);
    if (place < 0)
        qFatal("nothing to replace: %s", part.constData());
    return json.replace(place, part.size(), replacement);
}

} // namespace

class TestTranscriptRecord : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void form() { QCOMPARE(Samples::fullRecord().json(), QByteArray(fullForm)); }

    void absentOptionalsAreLeftOut()
    {
        const QJsonObject object = QJsonDocument::fromJson(Samples::plainRecord(u"a"_s).json()).object();
        QCOMPARE(object.keys(),
                 QStringList({u"createdAt"_s, u"durationMs"_s, u"id"_s, u"kind"_s, u"languageCode"_s,
                              u"modelID"_s, u"segments"_s, u"text"_s, u"title"_s}));
    }

    void comesBack_data()
    {
        const Rows<TranscriptRecord> row("record");
        row("every field", Samples::fullRecord());
        row("no optional field", Samples::plainRecord(u"Запись"_s));

        TranscriptRecord empty = Samples::plainRecord(QString());
        empty.events.emplace();
        empty.corrected = u""_s;
        empty.id = QUuid();
        row("empty but present", empty);

        TranscriptRecord extreme = Samples::fullRecord();
        extreme.durationMs = std::numeric_limits<qint64>::max();
        extreme.segments.first().start = std::numeric_limits<qint64>::min();
        extreme.segments.first().end = (1LL << 53) + 1;
        extreme.segments.first().speaker = -1;
        extreme.createdAt = QDateTime(QDate(1, 1, 1), QTime(0, 0), Qt::UTC);
        row("extreme numbers", extreme);

        TranscriptRecord odd =
            Samples::plainRecord(u"\"\\/\b\f\n\r\t\u0001\u007f\u2028 🎙 é"_s + QChar(0) + u"x"_s);
        odd.segments = {{.start = 0, .end = 1, .text = odd.title, .speaker = {}}};
        row("odd characters", odd);
    }

    void comesBack()
    {
        QFETCH(const TranscriptRecord, record);
        const auto back = read(record.json());
        QVERIFY(back == record);
        QCOMPARE(back.value_or(TranscriptRecord()).json(), record.json());
    }

    void readsFormOfOthers_data()
    {
        const Rows<QByteArray> row("json");
        const QByteArray full(fullForm);
        row("escaped slashes", fullFormWith("/home/user/", "\\/home\\/user\\/"));
        row("escaped letters", fullFormWith("Двое", "\\u0414\\u0432\\u043e\\u0435"));
        row("other key order", fullFormWith("\"title\": \"Планёрка / «среда»\"", "\"kind\": \"meeting\"")
                                   .replace("\"kind\": \"meeting\",\n    \"languageCode\"",
                                            "\"title\": \"Планёрка / «среда»\", \"languageCode\""));
        row("unknown keys",
            fullFormWith("\"kind\": \"prompt\"",
                         "\"kind\": \"prompt\", \"x\": [{\"text\": \"\"}, -1e9, null, \"]}\"], \"Kind\": 1"));
        row("integral with an exponent", fullFormWith("7500,\n    \"events\"", "75e2,\n    \"events\""));
        row("lower-case id", fullFormWith("0A1B2C3D-4E5F", "0a1b2c3d-4e5f"));
        row("zone east of Greenwich", fullFormWith("2025-03-03T14:05:09Z", "2025-03-03T17:35:09+03:30"));
        row("null for absent", fullFormWith("\"start\": 4000,", "\"start\": 4000, \"speaker\": null,"));
        row("white space around", " \r\n\t" + full + "\n\n ");
    }

    void readsFormOfOthers()
    {
        QFETCH(const QByteArray, json);
        QVERIFY(read(json) == Samples::fullRecord());
    }

    void unreadable_data()
    {
        const Rows<QByteArray> row("json");
        const QByteArray duration = "7500,\n    \"events\"";
        const auto withDuration = [&](const QByteArray &number) {
            return fullFormWith(duration, number + ",\n    \"events\"");
        };
        row("no JSON", "Привет");
        row("half written", QByteArray(fullForm).chopped(40));
        row("overwritten by a shorter one", QByteArray(fullForm) + "azadi\"\n}\n");
        row("zeros after a crash", QByteArray(2000, '\0'));
        row("half a surrogate pair", fullFormWith("Двое", "\\ud83c"));
        row("nested without end", fullFormWith("{", "{\"x\": " + QByteArray(100'000, '[')));
        row("fraction", withDuration("12.5"));
        row("beyond 64 bits", withDuration("9223372036854775808"));
        row("unknown kind", fullFormWith("\"meeting\"", "\"dictation\""));
        row("unknown event", fullFormWith("\"prompt\",", "\"rename\","));
        row("optional of wrong type", fullFormWith("\"Поздоровались.\"", "7"));
        row("date with fraction", fullFormWith("14:05:09Z", "14:05:09.5Z"));
        row("no such day", fullFormWith("2025-03-03T", "2025-02-30T"));
        row("id in braces",
            fullFormWith("0A1B2C3D-4E5F-4607-8899-AABBCCDDEEFF", "{0A1B2C3D-4E5F-4607-8899-AABBCCDDEEFF}"));
    }

    void unreadable()
    {
        QFETCH(const QByteArray, json);
        QVERIFY(!read(json));
    }

    void everyRequiredKey()
    {
        const QJsonObject complete = QJsonDocument::fromJson(Samples::plainRecord(u"a"_s).json()).object();
        for (const QString &key : complete.keys()) {
            QJsonObject object = complete;
            object.remove(key);
            QVERIFY2(!read(QJsonDocument(object).toJson()), qPrintable(key));
            object.insert(key, QJsonValue::Null);
            QVERIFY2(!read(QJsonDocument(object).toJson()), qPrintable(key));
        }
    }

    void readerOutlivesBadRecords()
    {
        TranscriptRecordReader reader;
        QVERIFY(!reader.read(QByteArray(fullForm).chopped(100)));
        QVERIFY(!reader.read("{\"segments\": [1]}"));
        QVERIFY(reader.read(fullForm) == Samples::fullRecord());
    }

    void segmentsForViews()
    {
        const TranscriptRecord record = Samples::fullRecord();
        const QList<DisplaySegment> first = record.displaySegments();
        const QList<DisplaySegment> second = record.displaySegments();
        QCOMPARE(first.size(), 2);
        QCOMPARE_NE(first[0].id, second[0].id);
        QCOMPARE_NE(first[0].id, first[1].id);
        QVERIFY(TranscriptRecord::segmentsFrom(first) == record.segments);
        QVERIFY(TranscriptRecord().displaySegments().isEmpty());
    }

    void playableURL_data()
    {
        const Rows<std::optional<QString>, std::optional<QString>, QString> row("audioFileName", "source",
                                                                                "expected");
        using Name = std::optional<QString>;
        row("recording first", Name(u"да %1.wav"_s), Name(u"film.mp4"_s), u"Recordings/да %1.wav"_s);
        row("recording removed", Name(u"gone.wav"_s), Name(u"film.mp4"_s), u"film.mp4"_s);
        row("source only", Name(), Name(u"film.mp4"_s), u"film.mp4"_s);
        row("neither left", Name(u"gone.wav"_s), Name(u"gone.mp4"_s), {});
        row("neither given", Name(), Name(), {});
        row("a folder is no recording", Name(u""_s), Name(), {});
    }

    void playableURL()
    {
        QFETCH(const std::optional<QString>, audioFileName);
        QFETCH(const std::optional<QString>, source);
        QFETCH(const QString, expected);
        const QTemporaryDir folder;
        const QString recordings = folder.filePath(u"Recordings"_s);
        Samples::put(recordings + u"/да %1.wav"_s, "RIFF");
        Samples::put(folder.filePath(u"film.mp4"_s), "ftyp");

        TranscriptRecord record;
        record.audioFileName = audioFileName;
        if (source)
            record.sourceFilePath = folder.filePath(*source);
        const auto url = record.playableURL(recordings);
        QCOMPARE(url.has_value(), !expected.isEmpty());
        if (url)
            QCOMPARE(url->toLocalFile(), folder.filePath(expected));
    }
};

QTEST_GUILESS_MAIN(TestTranscriptRecord)
#include "tst_transcriptrecord.moc"
