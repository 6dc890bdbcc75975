#include "audio/AudioDecoder.h"
#include "audio/SampleRate.h"
#include "audio/WavFileWriter.h"
#include "engine/EngineProcessRegistry.h"
#include "recognition/TranscriptionService.h"
#include "tests/support/FakeEngineHome.h"
#include "tests/support/Rows.h"
#include "tests/support/TaskResult.h"

#include <QProcess>
#include <QRegularExpression>
#include <QSignalSpy>

using namespace Qt::StringLiterals;
using namespace orvane;
using namespace orvane::test;
using History = TranscriptionService::History;
using Request = TranscriptionService::Request;

namespace {

const QString inference = u"/inference"_s;
const QString recognising = u"Распознавание речи… (первый запуск движка — несколько секунд)"_s;
const QString decoding = u"Декодирование аудио…"_s;
const QString cancelled = u"Отменено"_s;
const QString failed = u"Ошибка"_s;
const QString wait = u"Дождитесь завершения текущей операции — движок выполняет их по одной"_s;
const QByteArray twoSegments =
    R"({"segments":[{"start":0,"end":1,"text":" one"},{"start":1,"end":2,"text":" two"}]})";

FakeEngineBehaviour answering(const QList<FakeAnswer> &answers)
{
    return {.answers = {{inference, answers}}};
}

QStringList textsOf(const QList<DisplaySegment> &segments)
{
    QStringList texts;
    for (const DisplaySegment &segment : segments)
        texts.append(segment.text);
    return texts;
}

} // namespace

class TestTranscriptionService : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_home = std::make_unique<FakeEngineHome>(u"whisper-server"_s);
        m_home->behave(answering({{.body = twoSegments}}));
        m_registry = std::make_unique<EngineProcessRegistry>(QString());
        m_engine = std::make_unique<WhisperServerEngine>(
            EngineServer::SearchPath{.resources = m_home->resources(), .folders = {}}, *m_registry,
            m_home->resources());
        m_pipeline = std::make_unique<TranscriptPipeline>(*m_engine, m_decoder);
        m_statuses.clear();
        m_saved.clear();
        m_save = [this](const Request &, const Transcript &transcript) {
            m_saved.append(joinedText(transcript.segments));
            return QUuid::createUuid();
        };
        m_service = std::make_unique<TranscriptionService>(TranscriptionService::Collaborators{
            .engine = *m_engine,
            .pipeline = *m_pipeline,
            .turns = m_turns,
            .saveRecord = [this](const Request &request, const Transcript &transcript) {
                return m_save(request, transcript);
            }});
        connect(m_service.get(), &TranscriptionService::statusTextChanged, this,
                [this] { m_statuses.append(m_service->statusText()); });
    }

    void cleanup()
    {
        m_service.reset();
        m_pipeline.reset();
        m_engine.reset();
        QTRY_VERIFY(m_home->allEnded());
        QCoreApplication::processEvents(); // what waited for that goes on
    }

    void stages_data()
    {
        const Rows<QString, QList<FakeAnswer>, QStringList, bool> row("name", "answers", "statuses",
                                                                      "isSentAsItIs");
        const QString done = u"Готово · 2 сегментов"_s;
        const FakeAnswer good{.body = twoSegments};
        row("direct", u"a.b.MP3"_s, QList{good}, {recognising, done}, true);
        row("decoded", u"a.wav.bak"_s, QList{good}, {decoding, recognising, done}, false);
        row("server cannot read it", u"voice.ogg"_s, QList{FakeAnswer{.status = 400}, good},
            {recognising, decoding, recognising, done}, false);
    }

    void stages()
    {
        QFETCH(const QString, name);
        QFETCH(const QList<FakeAnswer>, answers);
        QFETCH(const QStringList, statuses);
        QFETCH(const bool, isSentAsItIs);
        m_home->behave(answering(answers));
        const Request request = this->request(name);
        const QByteArray mark = "LIST";
        QFile file(request.audioPath);
        QVERIFY(file.open(QFile::Append));
        file.write(mark); // what only the file itself has
        file.close();
        transcribe(request);
        QCOMPARE(m_service->errorText(), QString());
        QCOMPARE(m_statuses, statuses);
        const QByteArray body = m_home->requests(inference).last().body();
        QVERIFY(body.contains("RIFF"));
        QCOMPARE(body.contains(mark + "\r\n"), isSentAsItIs);
    }

    void publishesWhatItReturns()
    {
        m_home->behave(
            answering({{.body = R"({"segments":[{"start":0.5,"end":1,"text":" go."},{"text":" go."},
            {"text":" Go. "},{"text":" go."},{"start":2,"end":3.25,"text":" end"}]})"}}));
        const auto result = finished(m_service->transcribe(request(u"a.wav"_s)));
        QVERIFY(result.succeeded());
        QCOMPARE(textsOf(m_service->segments()), (QStringList{u" go."_s, u" go."_s, u" end"_s}));
        QCOMPARE(m_service->segments().first().start, 500);
        QCOMPARE(m_service->segments().last().end, 3250);
        QVERIFY(!m_service->segments().first().speaker);
        QCOMPARE(m_service->transcript(), u" go. go. end"_s);
        QCOMPARE(m_service->progress(), 1.0);
        QCOMPARE(result.value().transcript.segments, m_service->segments());
        QCOMPARE(result.value().transcript.length, std::chrono::seconds(1));
        QCOMPARE(m_saved, QStringList{m_service->transcript()});
        QCOMPARE(result.value().savedID, m_service->lastSavedID());

        m_saved.clear();
        const auto unsaved = finished(m_service->transcribe(request(u"b.wav"_s, History::Skip)));
        QVERIFY(unsaved.succeeded());
        QVERIFY(!unsaved.value().savedID);
        QCOMPARE(m_saved, QStringList());

        const QUuid token = m_service->resetToken();
        m_service->reset();
        QVERIFY(m_service->resetToken() != token);
        QCOMPARE(m_service->transcript() + m_service->statusText(), QString());
        QVERIFY(m_service->segments().isEmpty());
    }

    void damagedMedium_data()
    {
        const Rows<QString> row("name");
        row("read by the server", u"a.flac"_s);
        row("decoded", u"a.mka"_s);
    }

    void damagedMedium()
    {
        QFETCH(const QString, name);
        Request request = this->request(u"a.wav"_s);
        request.audioPath = m_home->resources() + u'/' + name;
        const QStringList sound = {u"-f"_s, u"lavfi"_s, u"-i"_s, u"sine=duration=60"_s, u"-c:a"_s, u"flac"_s};
        QCOMPARE(QProcess::execute(u"ffmpeg"_s,
                                   QStringList{u"-v"_s, u"error"_s} + sound + QStringList{request.audioPath}),
                 0);
        QVERIFY(QFile::resize(request.audioPath, QFileInfo(request.audioPath).size() / 2));
        const auto result = finished(m_service->transcribe(request));
        QVERIFY(result.succeeded());
        QCOMPARE(m_service->transcript(), u" one two"_s);
        const QString damage = result.value().transcript.damageText();
        static const QRegularExpression expected(
            u"^файл повреждён с 0:(2[5-9]|3[0-5]), дальше ничего не распознано$"_s);
        QVERIFY2(expected.match(damage).hasMatch(), qPrintable(damage));
        QCOMPARE(m_service->statusText(), u"Готово · 2 сегментов · "_s + damage);
    }

    void meeting()
    {
        m_home->behave(
            answering({{.body = R"~({"segments":[{"text":" [BLANK_AUDIO]"},{"text":" go."},{"text":" go."},
            {"text":" (music)"},{"text":" go."},{"text":" *coughs*"},{"text":" "}]})~"}}));
        TranscriptPipeline::Request meeting{.audioPath =
                                                recording(u"a.wav"_s, std::vector<float>(sampleRate)),
                                            .model = ModelFile::atPath(model()),
                                            .language = u"auto"_s,
                                            .medium = TranscriptPipeline::Medium::Meeting};
        const auto heard = finished(m_pipeline->run(meeting, Progress(), {}));
        QVERIFY(heard.succeeded());
        QCOMPARE(textsOf(heard.value().segments), (QStringList{u" go."_s, u" go."_s}));

        meeting.audioPath = recording(u"empty.wav"_s, {});
        const auto silent = finished(m_pipeline->run(meeting, Progress(), {}));
        QVERIFY(silent.succeeded());
        QVERIFY(silent.value().segments.isEmpty());
        QCOMPARE(m_home->requests(inference).size(), 1);
    }

    void failures_data()
    {
        const Rows<FakeEngineBehaviour, QString> row("behaviour", "error");
        row("status", answering({{.status = 500}}), u"Ошибка распознавания: HTTP 500"_s);
        row("start", FakeEngineBehaviour{.exitAfterMs = 0},
            u"Не удалось запустить движок распознавания: процесс неожиданно завершился"_s);
    }

    void failures()
    {
        QFETCH(const FakeEngineBehaviour, behaviour);
        QFETCH(const QString, error);
        m_home->behave(behaviour);
        const auto result = finished(m_service->transcribe(request(u"a.wav"_s)));
        QCOMPARE(result.error(), error);
        QCOMPARE(m_service->errorText(), error);
        QCOMPARE(m_statuses, (QStringList{recognising, failed}));
        QCOMPARE(m_saved, QStringList());

        m_home->behave(answering({{.body = twoSegments}}));
        transcribe(request(u"a.wav"_s));
        QCOMPARE(m_service->errorText(), QString());
        QCOMPARE(m_saved.size(), 1);
    }

    void cancelling_data()
    {
        const Rows<FakeEngineBehaviour, QString, int, int> row("behaviour", "name", "launches", "requests");
        row("decoding", answering({{.body = twoSegments}}), u"a.mov"_s, 0, 0);
        row("loading", FakeEngineBehaviour{.portDelayMs = 10'000}, u"a.wav"_s, 1, 0);
        row("recognising", answering({FakeAnswer::never()}), u"a.wav"_s, 1, 1);
    }

    void cancelling()
    {
        QFETCH(const FakeEngineBehaviour, behaviour);
        QFETCH(const QString, name);
        QFETCH(const int, launches);
        QFETCH(const int, requests);
        m_home->behave(behaviour);
        const TaskResult result(m_service->transcribe(request(name)));
        QTRY_VERIFY(m_home->launches().size() == launches && m_home->requests(inference).size() == requests);
        m_service->cancel();
        QVERIFY(!m_service->isWorking());
        QVERIFY(!m_turns.isTaken());
        QTRY_VERIFY(result.isDone());
        QVERIFY(result.isCancelled());
        QCOMPARE(m_service->statusText(), cancelled);
        QCOMPARE(m_service->errorText(), QString());
        QCOMPARE(m_service->transcript(), QString());
        QVERIFY(m_service->progress() < 1);
        QCOMPARE(m_saved, QStringList());
        QTRY_COMPARE(m_home->abandoned(inference), requests);

        m_home->behave(answering({{.body = twoSegments}}));
        transcribe(request(u"b.wav"_s));
        QCOMPARE(m_service->transcript(), u" one two"_s);
        m_service->cancel(); // nothing is running
        QCOMPARE(m_service->statusText(), u"Готово · 2 сегментов"_s);
    }

    void oneAtATime()
    {
        const QString refusal = u"Ошибка распознавания: движок занят другой расшифровкой"_s;
        const TaskResult first(m_service->transcribe(request(u"a.wav"_s)));
        const TaskResult second(m_service->transcribe(request(u"b.wav"_s)));
        QCOMPARE(second.error(), wait);
        const TaskResult refused(m_service->transcribeDetached(request(u"b.wav"_s)));
        QCOMPARE(refused.error(), refusal);
        QVERIFY(m_service->isWorking() && !m_service->isBusyDetached());
        QTRY_VERIFY(first.succeeded());
        QCOMPARE(m_home->requests(inference).size(), 1);

        const TaskResult detached(m_service->transcribeDetached(request(u"a.wav"_s)));
        const TaskResult again(m_service->transcribeDetached(request(u"b.wav"_s)));
        QCOMPARE(again.error(), refusal);
        const auto file = finished(m_service->transcribe(request(u"b.wav"_s)));
        QCOMPARE(m_service->errorText(), wait);
        QVERIFY(m_service->isBusyDetached());
        QTRY_VERIFY(detached.succeeded());
    }

    void detached()
    {
        QSignalSpy busy(m_service.get(), &TranscriptionService::isBusyDetachedChanged);
        const TaskResult good(m_service->transcribeDetached(request(u"a.mov"_s)));
        QVERIFY(m_service->isBusyDetached());
        QTRY_VERIFY(good.succeeded());
        QCOMPARE(textsOf(good.value().segments), (QStringList{u" one"_s, u" two"_s}));

        m_home->behave(answering({FakeAnswer::never()}));
        std::stop_source stop;
        const TaskResult stopped(m_service->transcribeDetached(request(u"a.wav"_s), stop.get_token()));
        QTRY_COMPARE(m_home->requests(inference).size(), 2);
        stop.request_stop();
        QVERIFY(!m_service->isBusyDetached() && !m_turns.isTaken());
        QTRY_VERIFY(stopped.isCancelled());
        QTRY_COMPARE(m_home->abandoned(inference), 1);

        QCOMPARE(busy.size(), 4);
        QCOMPARE(m_statuses, QStringList());
        QCOMPARE(m_saved, QStringList());
        QCOMPARE(m_service->transcript() + m_service->errorText(), QString());
    }

    void prewarmingAndRestart()
    {
        m_service->prewarm(model());
        QTRY_COMPARE(m_home->launches().size(), 1);
        transcribe(request(u"a.wav"_s));
        QCOMPARE(m_home->launches().size(), 1);

        m_engine->requestRestart();
        m_home->behave({.exitAfterMs = 0});
        QTest::failOnWarning(QRegularExpression(u".*"_s));
        m_service->prewarm(model());
        QTRY_COMPARE(m_home->launches().size(), 2);
        QTRY_VERIFY(!m_engine->isRunning());
        QCOMPARE(m_service->errorText(), QString());
    }

    void destroyed()
    {
        m_home->behave(answering({FakeAnswer::never()}));
        const TaskResult main(m_service->transcribe(request(u"a.wav"_s)));
        QTRY_COMPARE(m_home->requests(inference).size(), 1);
        m_service.reset();
        QTRY_VERIFY(main.isCancelled());
        QCOMPARE(m_saved, QStringList());
    }

private:
    [[nodiscard]] QString model() const { return m_home->resources() + u"/model"_s; }

    /// WAV, whatever the name says.
    [[nodiscard]] QString recording(const QString &name, const std::vector<float> &samples) const
    {
        const QString path = m_home->resources() + u'/' + name;
        WavFileWriter writer(path, sampleRate);
        if (!samples.empty())
            writer.append(samples);
        writer.finalize();
        return path;
    }

    /// For a second of silence.
    [[nodiscard]] Request request(const QString &name, History history = History::Save) const
    {
        return {.audioPath = recording(name, std::vector<float>(sampleRate)),
                .model = ModelFile::atPath(model()),
                .language = u"auto"_s,
                .history = history};
    }

    void transcribe(const Request &request)
    {
        const TaskResult result(m_service->transcribe(request));
        QVERIFY(m_service->isWorking());
        QTRY_VERIFY(result.isDone());
        QVERIFY(!m_service->isWorking());
    }

    std::unique_ptr<FakeEngineHome> m_home;
    std::unique_ptr<EngineProcessRegistry> m_registry;
    std::unique_ptr<WhisperServerEngine> m_engine;
    const AudioDecoder m_decoder{QStringLiteral(ORVANE_RESOURCES)};
    const EngineTurns m_turns;
    std::unique_ptr<TranscriptPipeline> m_pipeline;
    std::unique_ptr<TranscriptionService> m_service;
    QStringList m_statuses;
    QStringList m_saved;
    TranscriptionService::RecordSaver m_save;
};

QTEST_GUILESS_MAIN(TestTranscriptionService)
#include "tst_transcriptionservice.moc"
