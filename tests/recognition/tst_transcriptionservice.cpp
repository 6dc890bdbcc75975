#include "audio/AudioDecoder.h"
#include "audio/WavFileWriter.h"
#include "engine/EngineProcessRegistry.h"
#include "recognition/TranscriptionService.h"
#include "tests/support/FakeEngineHome.h"
#include "tests/support/TaskResult.h"

#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace orvane;
using History = TranscriptionService::History;
using Request = TranscriptionService::Request;
using Segments = QList<DisplaySegment>;
using Speakers = TranscriptionService::SpeakerDetection;

namespace {

const QString inference = u"/inference"_s;
const QString recognising = u"Распознавание речи… (первый запуск движка — несколько секунд)"_s;
const QString decoding = u"Декодирование аудио…"_s;
const QString cancelled = u"Отменено"_s;
const QString failed = u"Ошибка"_s;
const QByteArray twoSegments =
    R"({"segments":[{"start":0,"end":1,"text":" one"},{"start":1,"end":2,"text":" two"}]})";

FakeEngineBehaviour answering(const QList<FakeAnswer> &answers)
{
    return {.answers = {{inference, answers}}};
}

QStringList textsOf(const Segments &segments)
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
    void init();
    void cleanup();

    void stages_data();
    void stages();
    void neitherSideReadsIt();
    void publishesResult();
    void savesRecord();
    void labelsSpeakersWhenAsked();
    void failures_data();
    void failures();
    void failingSaver();
    void cancelling_data();
    void cancelling();
    void secondCallDoesNothing();
    void detached();
    void detachedRefusesWhileBusy();
    void resetting();
    void nothingIsEstimatedBeforeRecognition();
    void prewarming();
    void engineRestart();
    void destroyed_data();
    void destroyed();

private:
    [[nodiscard]] QString model() const { return m_home->resources() + u"/model"_s; }
    /// A second of silence as WAV, whatever the name says.
    [[nodiscard]] QString recording(const QString &name) const;
    [[nodiscard]] Request request(const QString &name, History history = History::Save) const;
    void transcribe(const Request &request);

    std::unique_ptr<FakeEngineHome> m_home;
    std::unique_ptr<EngineProcessRegistry> m_registry;
    std::unique_ptr<WhisperServerEngine> m_engine;
    const AudioDecoder m_decoder{QStringLiteral(ORVANE_RESOURCES)};
    const EngineTurns m_turns;
    std::unique_ptr<TranscriptionService> m_service;
    QStringList m_statuses;
    QStringList m_saved;
    TranscriptionService::RecordSaver m_save;
};

void TestTranscriptionService::init()
{
    m_home = std::make_unique<FakeEngineHome>(u"whisper-server"_s);
    m_home->behave(answering({{.body = twoSegments}}));
    m_registry = std::make_unique<EngineProcessRegistry>(QString());
    m_engine = std::make_unique<WhisperServerEngine>(
        EngineServer::SearchPath{.resources = m_home->resources(), .folders = {}}, *m_registry,
        m_home->resources());
    m_statuses.clear();
    m_saved.clear();
    m_save = [this](const Request &, const Segments &, const QString &transcript) {
        m_saved.append(transcript);
        return QUuid::createUuid();
    };
    m_service = std::make_unique<TranscriptionService>(TranscriptionService::Collaborators{
        .engine = *m_engine,
        .decoder = m_decoder,
        .turns = m_turns,
        .saveRecord = [this](const Request &request, const Segments &segments,
                             const QString &transcript) { return m_save(request, segments, transcript); },
        .labelSpeakers = [](QString, Segments segments, int most, std::stop_token) -> QCoro::Task<Segments> {
            for (qsizetype i = 0; i < segments.size(); ++i)
                segments[i].speaker = i % most + 1;
            co_return segments;
        }});
    connect(m_service.get(), &TranscriptionService::statusTextChanged, this,
            [this] { m_statuses.append(m_service->statusText()); });
}

void TestTranscriptionService::cleanup()
{
    m_service.reset();
    m_engine.reset();
    QTRY_VERIFY(m_home->allEnded());
    QCoreApplication::processEvents(); // what waited for that goes on
}

QString TestTranscriptionService::recording(const QString &name) const
{
    const QString path = m_home->resources() + u'/' + name;
    WavFileWriter writer(path, 16000);
    writer.append(std::vector<float>(16000));
    writer.finalize();
    return path;
}

Request TestTranscriptionService::request(const QString &name, History history) const
{
    return {.audioPath = recording(name),
            .model = ModelFile::atPath(model()),
            .language = u"auto"_s,
            .history = history};
}

void TestTranscriptionService::transcribe(const Request &request)
{
    const TaskResult result(m_service->transcribe(request));
    QVERIFY(m_service->isWorking());
    QTRY_VERIFY(result.isDone());
    QVERIFY(result.succeeded());
    QVERIFY(!m_service->isWorking());
}

void TestTranscriptionService::stages_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QList<FakeAnswer>>("answers");
    QTest::addColumn<QStringList>("statuses");
    QTest::addColumn<bool>("isSentAsItIs");
    const QString done = u"Готово · 2 сегментов"_s;
    const FakeAnswer good{.body = twoSegments};
    for (const QString &name : {u"a.wav"_s, u"a.MP3"_s, u"a.b.Flac"_s, u"a.ogg"_s}) {
        QTest::newRow(qPrintable(name)) << name << QList{good} << QStringList{recognising, done} << true;
    }
    for (const QString &name : {u"a.m4a"_s, u"a.MOV"_s, u"wav"_s, u"a.wav.bak"_s}) {
        QTest::newRow(qPrintable(name))
            << name << QList{good} << QStringList{decoding, recognising, done} << false;
    }
    QTest::newRow("server cannot read it") << u"voice.ogg"_s << QList{FakeAnswer{.status = 400}, good}
                                           << QStringList{recognising, decoding, recognising, done} << false;
}

void TestTranscriptionService::stages()
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

void TestTranscriptionService::neitherSideReadsIt()
{
    m_home->behave(answering({{.status = 400}}));
    const Request request = this->request(u"text.mp3"_s);
    QFile file(request.audioPath);
    QVERIFY(file.open(QFile::WriteOnly));
    file.write("only words\n");
    file.close();
    transcribe(request);
    QCOMPARE(m_statuses, (QStringList{recognising, decoding, failed}));
    QVERIFY(!m_service->errorText().isEmpty());
    QVERIFY2(!m_service->errorText().contains(u"HTTP"_s), qPrintable(m_service->errorText()));
}

void TestTranscriptionService::publishesResult()
{
    m_home->behave(answering({{.body = R"({"segments":[{"start":0.5,"end":1,"text":" go."},{"text":" go."},
        {"text":" Go. "},{"text":" go."},{"start":2,"end":3.25,"text":" end"}]})"}}));
    QSignalSpy working(m_service.get(), &TranscriptionService::isWorkingChanged);
    transcribe(request(u"a.wav"_s));
    QCOMPARE(working.size(), 2);
    QCOMPARE(textsOf(m_service->segments()), (QStringList{u" go."_s, u" go."_s, u" end"_s}));
    QCOMPARE(m_service->segments().first().start, 500);
    QCOMPARE(m_service->segments().last().end, 3250);
    QVERIFY(!m_service->segments().first().speaker);
    QCOMPARE(m_service->transcript(), u" go. go. end"_s);
    QCOMPARE(m_service->progress(), 1.0);
    QCOMPARE(m_service->statusText(), u"Готово · 3 сегментов"_s);
}

void TestTranscriptionService::savesRecord()
{
    const QUuid id = QUuid::createUuid();
    m_save = [this, id](const Request &request, const Segments &segments, const QString &transcript) {
        m_saved = {request.audioPath, QString::number(segments.size()), transcript};
        return id;
    };
    const Request first = request(u"a.wav"_s);
    transcribe(first);
    QCOMPARE(m_saved, (QStringList{first.audioPath, u"2"_s, u" one two"_s}));
    QCOMPARE(m_service->lastSavedID(), id);

    m_saved.clear();
    transcribe(request(u"b.wav"_s, History::Skip));
    QCOMPARE(m_saved, QStringList());

    m_save = [](const Request &, const Segments &, const QString &) { return std::nullopt; };
    transcribe(first);
    QCOMPARE(m_service->lastSavedID(), id);
}

void TestTranscriptionService::labelsSpeakersWhenAsked()
{
    Request request = this->request(u"a.wav"_s);
    request.speakers = Speakers::On;
    transcribe(request);
    QCOMPARE(m_service->segments().first().speaker, std::optional<qint64>(1));
    QCOMPARE(m_service->segments().last().speaker, std::optional<qint64>(2));
}

void TestTranscriptionService::failures_data()
{
    QTest::addColumn<FakeEngineBehaviour>("behaviour");
    QTest::addColumn<QString>("error");
    QTest::newRow("status") << answering({{.status = 500}}) << u"Ошибка распознавания: HTTP 500"_s;
    QTest::newRow("start") << FakeEngineBehaviour{.exitAfterMs = 0}
                           << u"Не удалось запустить движок распознавания: процесс неожиданно завершился"_s;
}

void TestTranscriptionService::failures()
{
    QFETCH(const FakeEngineBehaviour, behaviour);
    QFETCH(const QString, error);
    m_home->behave(behaviour);
    transcribe(request(u"a.wav"_s));
    QCOMPARE(m_service->errorText(), error);
    QCOMPARE(m_statuses, (QStringList{recognising, failed}));
    QCOMPARE(m_saved, QStringList());

    m_home->behave(answering({{.body = twoSegments}}));
    transcribe(request(u"a.wav"_s));
    QCOMPARE(m_service->errorText(), QString());
    QCOMPARE(m_saved.size(), 1);
}

void TestTranscriptionService::failingSaver()
{
    m_save = [](const Request &, const Segments &, const QString &) -> std::optional<QUuid> {
        throw Error(u"disk is full"_s);
    };
    transcribe(request(u"a.wav"_s));
    QCOMPARE(m_service->errorText(), u"disk is full"_s);
    QCOMPARE(m_service->transcript(), u" one two"_s); // the user still has the text
    QVERIFY(m_service->lastSavedID().isNull());
}

void TestTranscriptionService::cancelling_data()
{
    QTest::addColumn<FakeEngineBehaviour>("behaviour");
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("launches");
    QTest::addColumn<int>("requests");
    QTest::newRow("decoding") << answering({{.body = twoSegments}}) << u"a.mov"_s << 0 << 0;
    QTest::newRow("loading") << FakeEngineBehaviour{.portDelayMs = 500} << u"a.wav"_s << 1 << 0;
    QTest::newRow("recognising") << answering({{.body = twoSegments, .delayMs = 500}}) << u"a.wav"_s << 1
                                 << 1;
    QTest::newRow("failing then") << answering({{.status = 500, .delayMs = 500}}) << u"a.wav"_s << 1 << 1;
}

void TestTranscriptionService::cancelling()
{
    QFETCH(const FakeEngineBehaviour, behaviour);
    QFETCH(const QString, name);
    QFETCH(const int, launches);
    QFETCH(const int, requests);
    m_home->behave(behaviour);
    const TaskResult result(m_service->transcribe(request(name)));
    QTRY_VERIFY(m_home->launches().size() == launches && m_home->requests(inference).size() == requests);
    m_service->cancel();
    QCOMPARE(m_service->statusText(), cancelled);
    QTRY_VERIFY(result.isDone());
    QVERIFY(!m_service->isWorking());
    QCOMPARE(m_service->statusText(), cancelled);
    QCOMPARE(m_service->errorText(), QString());
    QCOMPARE(m_service->transcript(), QString());
    QVERIFY(m_service->progress() < 1);
    QCOMPARE(m_saved, QStringList());
    QCOMPARE(m_home->abandoned(inference), 0);

    m_home->behave(answering({{.body = twoSegments}}));
    transcribe(request(u"b.wav"_s));
    QCOMPARE(m_service->transcript(), u" one two"_s);
    m_service->cancel(); // nothing is running
    QCOMPARE(m_service->statusText(), u"Готово · 2 сегментов"_s);
}

void TestTranscriptionService::secondCallDoesNothing()
{
    m_home->behave(answering({{.body = twoSegments, .delayMs = 300}}));
    const TaskResult first(m_service->transcribe(request(u"a.wav"_s)));
    const TaskResult second(m_service->transcribe(request(u"b.wav"_s)));
    QTRY_VERIFY(second.succeeded());
    QVERIFY(m_service->isWorking());
    QTRY_VERIFY(first.isDone());
    QCOMPARE(m_home->requests(inference).size(), 1);
}

void TestTranscriptionService::detached()
{
    QSignalSpy busy(m_service.get(), &TranscriptionService::isBusyDetachedChanged);
    const TaskResult good(m_service->transcribeDetached(request(u"a.mov"_s)));
    QVERIFY(m_service->isBusyDetached());
    QTRY_VERIFY(good.isDone());
    QCOMPARE(good.error(), QString());
    QCOMPARE(textsOf(good.value()), (QStringList{u" one"_s, u" two"_s}));

    m_home->behave(answering({{.status = 500}}));
    const TaskResult bad(m_service->transcribeDetached(request(u"a.wav"_s)));
    QTRY_VERIFY(bad.isDone());
    QCOMPARE(bad.error(), u"Ошибка распознавания: HTTP 500"_s);

    QVERIFY(!m_service->isBusyDetached());
    QCOMPARE(busy.size(), 4);
    QCOMPARE(m_statuses, QStringList());
    QCOMPARE(m_saved, QStringList());
    QCOMPARE(m_service->transcript() + m_service->errorText(), QString());
    QCOMPARE(m_service->progress(), 0.0);
}

void TestTranscriptionService::detachedRefusesWhileBusy()
{
    const QString refusal = u"Ошибка распознавания: движок занят другой расшифровкой"_s;
    const TaskResult main(m_service->transcribe(request(u"a.wav"_s)));
    const TaskResult refused(m_service->transcribeDetached(request(u"b.wav"_s)));
    QTRY_VERIFY(refused.isDone());
    QCOMPARE(refused.error(), refusal);
    QVERIFY(!m_service->isBusyDetached());
    QTRY_VERIFY(main.isDone());

    const TaskResult detached(m_service->transcribeDetached(request(u"a.wav"_s)));
    const TaskResult again(m_service->transcribeDetached(request(u"b.wav"_s)));
    QTRY_VERIFY(again.isDone());
    QCOMPARE(again.error(), refusal);
    QVERIFY(m_service->isBusyDetached());
    const TaskResult file(m_service->transcribe(request(u"b.wav"_s)));
    QTRY_VERIFY(file.isDone());
    QCOMPARE(m_service->errorText(),
             u"Дождитесь завершения текущей операции — движок выполняет их по одной"_s);
    QTRY_VERIFY(detached.succeeded());
}

void TestTranscriptionService::resetting()
{
    transcribe(request(u"a.wav"_s));
    const QUuid token = m_service->resetToken();
    const TaskResult running(m_service->transcribe(request(u"b.wav"_s)));
    m_service->reset();
    QCOMPARE(m_service->resetToken(), token);
    QTRY_VERIFY(running.isDone());

    m_service->reset();
    QVERIFY(m_service->resetToken() != token);
    QCOMPARE(m_service->transcript() + m_service->statusText() + m_service->errorText(), QString());
    QVERIFY(m_service->segments().isEmpty());
    QCOMPARE(m_service->progress(), 0.0);
}

void TestTranscriptionService::nothingIsEstimatedBeforeRecognition()
{
    QFile modelFile(model());
    QVERIFY(modelFile.open(QFile::WriteOnly));
    QVERIFY(modelFile.resize(1'000'000'000)); // a hole: large enough for an estimate of seconds
    m_home->behave(answering({{.status = 500}}));
    transcribe(request(u"a.wav"_s));

    m_service->requestEngineRestart();
    m_home->behave({.portDelayMs = 600, .answers = {{inference, {{.body = twoSegments, .delayMs = 600}}}}});
    double whileLoading = 0;
    double whileRecognising = 0;
    connect(m_service.get(), &TranscriptionService::progressChanged, this, [&] {
        double &most = m_home->requests(inference).size() == 1 ? whileLoading : whileRecognising;
        most = std::max(most, m_service->progress());
    });
    transcribe(request(u"a.wav"_s));
    QCOMPARE(whileLoading, 0.0);
    QCOMPARE(whileRecognising, 1.0);
}

void TestTranscriptionService::prewarming()
{
    m_service->prewarm(model());
    QTRY_COMPARE(m_home->launches().size(), 1);
    transcribe(request(u"a.wav"_s));
    QCOMPARE(m_home->launches().size(), 1);

    m_service->requestEngineRestart();
    m_home->behave({.exitAfterMs = 0});
    QTest::failOnWarning(QRegularExpression(u".*"_s));
    m_service->prewarm(model());
    QTRY_COMPARE(m_home->launches().size(), 2);
    QTRY_VERIFY(!m_engine->isRunning());
    QCOMPARE(m_service->errorText(), QString());
}

void TestTranscriptionService::engineRestart()
{
    for (int launches = 1; launches <= 2; ++launches) {
        transcribe(request(u"a.wav"_s));
        QCOMPARE(m_home->launches().size(), launches);
        m_service->requestEngineRestart();
    }
}

void TestTranscriptionService::destroyed_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("requests");
    QTest::newRow("decoding") << u"a.mov"_s << 0;
    QTest::newRow("loading") << u"a.wav"_s << 0;
    QTest::newRow("recognising") << u"a.wav"_s << 1;
}

void TestTranscriptionService::destroyed()
{
    QFETCH(const QString, name);
    QFETCH(const int, requests);
    m_home->behave(answering({{.body = twoSegments, .delayMs = 300}}));
    const TaskResult main(m_service->transcribe(request(name)));
    QTRY_COMPARE(m_home->requests(inference).size(), requests);
    m_service.reset();
    QTRY_VERIFY(main.isDone());
    QCOMPARE(m_saved, QStringList());
}

QTEST_GUILESS_MAIN(TestTranscriptionService)
#include "tst_transcriptionservice.moc"
