#include "tests/e2e/OrvaneProgram.h"
#include "tests/support/Dialogue.h"
#include "tests/support/Files.h"
#include "tests/support/Rows.h"
#include "tests/support/WordError.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <csignal>

using namespace Qt::StringLiterals;
using namespace orvane;
using namespace orvane::test;

namespace {

const QString said =
    u"And so my fellow Americans ask not what your country can do for you ask what you can do for "
    "your country"_s;

/// Makes a media file with the ffmpeg program.
void makeMedia(const QStringList &arguments)
{
    QProcess ffmpeg;
    ffmpeg.start(u"ffmpeg"_s, QStringList{u"-nostdin"_s, u"-v"_s, u"error"_s, u"-y"_s} + arguments);
    QVERIFY2(ffmpeg.waitForFinished(-1) && ffmpeg.exitCode() == 0, ffmpeg.readAllStandardError().constData());
}

} // namespace

/// The real program with the real engine on real recordings.
class TranscribeTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void understandsEveryKindOfFile_data()
    {
        const Rows<QString, QStringList> row("name", "encoding");

        row("wav", u"a.wav"_s, {});
        row("mp3", u"a.MP3"_s, {u"-f"_s, u"mp3"_s});
        row("flac", u"a.flac"_s, {});
        row("vorbis", u"vorbis.ogg"_s, {u"-c:a"_s, u"libvorbis"_s});
        row("voice message", u"opus.ogg"_s, {u"-c:a"_s, u"libopus"_s});
        row("video", u"a.mp4"_s,
            {u"-f"_s, u"lavfi"_s, u"-i"_s, u"color=blue:size=64x64:rate=5"_s, u"-shortest"_s});
    }

    void understandsEveryKindOfFile()
    {
        QFETCH(QString, name);
        QFETCH(QStringList, encoding);
        const OrvaneProgram orvane(u"base"_s);
        const QString media = orvane.path(name);
        makeMedia(QStringList{u"-i"_s, fixture(u"jfk.wav"_s)} + encoding + QStringList{media});

        const auto result = orvane.run({u"transcribe"_s, media, u"--language"_s, u"en"_s, u"--no-history"_s});

        QCOMPARE(result.complaints, QByteArray());
        QCOMPARE(result.exitCode, 0);
        VERIFY_WORDS(QString::fromUtf8(result.output), said);
        QCOMPARE(orvane.temporaryFiles(), QStringList());
        QCOMPARE(orvane.recordFiles(), QStringList());
    }

    void refusesBadFilesInOneSentence_data()
    {
        const Rows<QString, QString> row("name", "complaint");

        row("video without sound", u"silent.mp4"_s, u"В файле нет аудиодорожки."_s);
        row("nothing that the server reads either", u"text.mp3"_s, u"Не удалось открыть файл: "_s);
    }

    void refusesBadFilesInOneSentence()
    {
        QFETCH(QString, name);
        QFETCH(QString, complaint);
        const OrvaneProgram orvane(u"base"_s);
        makeMedia({u"-f"_s, u"lavfi"_s, u"-i"_s, u"color=blue:size=64x64:rate=5"_s, u"-t"_s, u"1"_s,
                   orvane.path(u"silent.mp4"_s)});
        put(orvane.path(u"text.mp3"_s), "Dear diary, nothing here can be heard.\n");

        const auto result = orvane.run({u"transcribe"_s, orvane.path(name)});

        QCOMPARE(result.exitCode, 1);
        QCOMPARE(result.output, QByteArray());
        const QString words = QString::fromUtf8(result.complaints);
        QVERIFY2(words.contains(complaint), result.complaints.constData());
        QCOMPARE(words.count(u'\n'), 1);
        QCOMPARE(orvane.temporaryFiles(), QStringList());
        QCOMPARE(orvane.recordFiles(), QStringList());
    }

    void hearsRussian()
    {
        const OrvaneProgram orvane(u"base"_s);
        const auto result =
            orvane.run({u"transcribe"_s, fixture(u"russian.wav"_s), u"--language"_s, u"auto"_s});
        QCOMPARE(result.exitCode, 0);
        VERIFY_WORDS(QString::fromUtf8(result.output),
                     QString::fromUtf8(contentOf(fixture(u"russian.txt"_s))));
    }

    /// The language that nobody chose is found out.
    void readsStandardInput()
    {
        const OrvaneProgram orvane(u"base"_s);
        const QString media = orvane.path(u"a.mp3"_s);
        makeMedia({u"-i"_s, fixture(u"jfk.wav"_s), media});

        const auto result = orvane.run({u"transcribe"_s, u"-"_s}, media);

        QCOMPARE(result.complaints, QByteArray());
        VERIFY_WORDS(QString::fromUtf8(result.output), said);
        QCOMPARE(orvane.temporaryFiles(), QStringList());
        const QStringList files = orvane.recordFiles();
        QCOMPARE(files.size(), 1);
        const QJsonObject record = QJsonDocument::fromJson(contentOf(files.constFirst())).object();
        QCOMPARE(record[u"title"_s].toString(), u"Стандартный ввод"_s);
        QVERIFY(!record.contains(u"sourceFilePath"_s));
    }

    void labelsSpeakers_data()
    {
        const Rows<QStringList, QByteArray, bool> row("options", "preferences", "isLabelled");
        row("asked for", {u"--speakers"_s}, "{}", true);
        row("chosen", {}, R"({"detectSpeakers":true})", true);
        row("not wanted", {}, "{}", false);
    }

    void labelsSpeakers()
    {
        QFETCH(QStringList, options);
        QFETCH(QByteArray, preferences);
        QFETCH(bool, isLabelled);
        const OrvaneProgram orvane(u"base"_s);
        orvane.setPreferences(preferences);
        QDir().mkpath(orvane.path(u"speech"_s));
        const QString dialogue = test::Dialogue(orvane.path(u"speech"_s)).joined();

        const auto result = orvane.run(
            QStringList{u"transcribe"_s, dialogue, u"--language"_s, u"en"_s, u"--format"_s, u"md"_s} +
            options);

        QCOMPARE(result.exitCode, 0);
        const qsizetype first = result.output.indexOf("**Спикер 1**");
        const qsizetype second = result.output.indexOf("**Спикер 2**");
        QCOMPARE(first >= 0 && second > first, isLabelled);
        if (isLabelled) {
            QVERIFY2(result.output.mid(first, second - first).contains("morning"), result.output.constData());
            QVERIFY2(result.output.mid(second).contains("numbers"), result.output.constData());
        }
    }

    void storesARecordThatMatchesItsResult()
    {
        const OrvaneProgram orvane(u"base"_s);
        const auto result = orvane.run(
            {u"transcribe"_s, fixture(u"jfk.wav"_s), u"--language"_s, u"en"_s, u"--format"_s, u"json"_s});
        QCOMPARE(result.exitCode, 0);

        const QStringList files = orvane.recordFiles();
        QCOMPARE(files.size(), 1);
        QCOMPARE(contentOf(files.first()).trimmed(), result.output.trimmed());
        QCOMPARE(QFileInfo(files.first()).permissions() & ~(QFile::ReadUser | QFile::WriteUser),
                 QFile::ReadOwner | QFile::WriteOwner);

        const QJsonObject record = QJsonDocument::fromJson(result.output).object();
        QCOMPARE(record[u"title"_s].toString(), u"jfk"_s);
        QCOMPARE(record[u"kind"_s].toString(), u"file"_s);
        QCOMPARE(record[u"modelID"_s].toString(), u"base"_s);
        QCOMPARE(record[u"languageCode"_s].toString(), u"en"_s);
        QCOMPARE(record[u"sourceFilePath"_s].toString(), QFileInfo(fixture(u"jfk.wav"_s)).absoluteFilePath());
        QVERIFY(record[u"createdAt"_s].toString().endsWith(u'Z'));
        QCOMPARE(record[u"id"_s].toString() + u".json"_s, QFileInfo(files.first()).fileName());
        QVERIFY(record[u"durationMs"_s].toInteger() > 9000);

        const QString id = record[u"id"_s].toString();
        VERIFY_WORDS(record[u"text"_s].toString(), said);
        QVERIFY(orvane.run({u"history"_s, u"show"_s, id}).output.contains("country"));
        QCOMPARE(orvane.run({u"history"_s, u"rename"_s, id, u"Речь"_s}).exitCode, 0);
        const auto srt = orvane.run({u"history"_s, u"export"_s, id.first(8), u"--format"_s, u"srt"_s});
        QVERIFY2(srt.output.startsWith("1\n00:00:00,000 --> 00:00:"), srt.output.constData());
        QVERIFY(orvane.run({u"history"_s}).output.contains("Речь"));
        QCOMPARE(orvane.run({u"history"_s, u"delete"_s, id}).exitCode, 0);
        QCOMPARE(orvane.recordFiles(), QStringList());
    }

    void saysFromWhereAFileIsDamaged()
    {
        const OrvaneProgram orvane(u"base"_s);
        const QString media = orvane.path(u"a.flac"_s);
        makeMedia({u"-stream_loop"_s, u"2"_s, u"-i"_s, fixture(u"jfk.wav"_s), media});
        const QByteArray whole = contentOf(media);
        put(media, whole.first(whole.size() / 3));

        const auto result =
            orvane.run({u"transcribe"_s, media, u"--language"_s, u"en"_s, u"--format"_s, u"json"_s});

        QCOMPARE(result.exitCode, 0);
        const QString damage = u"файл повреждён с 0:1"_s;
        QVERIFY2(QString::fromUtf8(result.complaints).contains(damage), result.complaints.constData());
        const QJsonObject record = QJsonDocument::fromJson(result.output).object();
        VERIFY_WORDS(record[u"text"_s].toString(), said);
        QVERIFY(record[u"events"_s].toArray().last()[u"text"_s].toString().startsWith(damage));

        const auto anew = orvane.run(
            {u"history"_s, u"retranscribe"_s, record[u"id"_s].toString(), u"--language"_s, u"en"_s});
        QVERIFY2(QString::fromUtf8(anew.complaints).contains(damage), anew.complaints.constData());
    }

    void transcribesARecordAnew()
    {
        const OrvaneProgram orvane(u"base"_s);
        orvane.install(u"tiny.en"_s);
        const QString recording = orvane.path(u"talk.wav"_s);
        QVERIFY(QFile::copy(fixture(u"jfk.wav"_s), recording));
        const auto first = orvane.run({u"transcribe"_s, recording, u"--model"_s, u"tiny.en"_s,
                                       u"--language"_s, u"en"_s, u"--format"_s, u"json"_s});
        const QString id = QJsonDocument::fromJson(first.output)[u"id"_s].toString();

        const auto anew = orvane.run(
            {u"history"_s, u"retranscribe"_s, id, u"--model"_s, u"base"_s, u"--language"_s, u"en"_s});
        QCOMPARE(anew.complaints, QByteArray());
        QCOMPARE(anew.exitCode, 0);
        VERIFY_WORDS(QString::fromUtf8(anew.output), said);
        const QByteArray stored = contentOf(orvane.recordFiles().first());
        const QJsonObject record = QJsonDocument::fromJson(stored).object();
        QCOMPARE(record[u"modelID"_s].toString(), u"base"_s);
        QCOMPARE(record[u"text"_s].toString().trimmed(), QString::fromUtf8(anew.output).trimmed());
        QCOMPARE(record[u"events"_s].toArray().size(), 2);
        QCOMPARE(record[u"events"_s][1][u"kind"_s].toString(), u"transcription"_s);
        QCOMPARE(record[u"events"_s][1][u"text"_s], record[u"text"_s]);

        QVERIFY(QFile::remove(recording));
        const auto failed = orvane.run({u"history"_s, u"retranscribe"_s, id});
        QCOMPARE(failed.exitCode, 1);
        QVERIFY(failed.complaints.startsWith("Аудиофайл этой записи не найден"));
        QCOMPARE(failed.complaints.count('\n'), 1);
        QCOMPARE(contentOf(orvane.recordFiles().first()), stored);
    }

    void goesOnAfterAFileThatFails()
    {
        const OrvaneProgram orvane(u"base"_s);
        const QString results = orvane.path(u"results"_s);
        QDir().mkpath(results);

        const auto result =
            orvane.run({u"transcribe"_s, orvane.path(u"missing.mp3"_s), fixture(u"jfk.wav"_s),
                        u"--language"_s, u"en"_s, u"--format"_s, u"md"_s, u"--output"_s, results});

        QCOMPARE(result.exitCode, 1);
        QVERIFY(result.complaints.startsWith("missing.mp3: "));
        QVERIFY(contentOf(results + u"/jfk.md"_s).contains("country"));
    }

    void saysWhatDoesNotFitOnAFullDisk()
    {
        const OrvaneProgram orvane(u"base"_s);
        const auto result =
            orvane.run({u"transcribe"_s, fixture(u"jfk.wav"_s), u"--output"_s, u"/dev/full"_s});
        QCOMPARE(result.exitCode, 1);
        QVERIFY(!result.complaints.isEmpty());
        QCOMPARE(orvane.recordFiles().size(), 1); // the transcript itself is safe
    }

    void endsInOrderWhenInterrupted_data()
    {
        const Rows<int> row("signal");
        row("ctrl-c", SIGINT);
        row("terminate", SIGTERM);
    }

    void endsInOrderWhenInterrupted()
    {
        QFETCH(int, signal);
        const OrvaneProgram orvane(u"base"_s);
        const QString recording = orvane.path(u"long.wav"_s);
        makeMedia({u"-stream_loop"_s, u"40"_s, u"-i"_s, fixture(u"jfk.wav"_s), recording});

        const auto program = orvane.start({u"transcribe"_s, recording, u"--language"_s, u"en"_s});
        QTRY_COMPARE_WITH_TIMEOUT(orvane.enginesOf(*program).size(), 1, 120'000);
        const QList<qint64> engines = orvane.enginesOf(*program);
        ::kill(pid_t(program->processId()), signal);

        QVERIFY(program->waitForFinished(60'000));
        QCOMPARE(program->exitCode(), 128 + signal);
        QTRY_VERIFY_WITH_TIMEOUT(!isAlive(engines.first()), 10'000);
        QCOMPARE(orvane.temporaryFiles(), QStringList());
        QCOMPARE(orvane.recordFiles(), QStringList());
    }

    void leavesNoEngineWhenKilled()
    {
        const OrvaneProgram orvane(u"base"_s);
        const auto program = orvane.start({u"transcribe"_s, fixture(u"jfk.wav"_s)});
        QTRY_COMPARE_WITH_TIMEOUT(orvane.enginesOf(*program).size(), 1, 120'000);
        const qint64 engine = orvane.enginesOf(*program).first();
        program->kill();
        QVERIFY(program->waitForFinished(60'000));
        QTRY_VERIFY_WITH_TIMEOUT(!isAlive(engine), 10'000);
    }
};

QTEST_GUILESS_MAIN(TranscribeTest)
#include "tst_transcribe.moc"
