#include "correction/TextCorrectionService.h"
#include "models/CorrectionModelManager.h"
#include "processing/RecordProcessor.h"
#include "recognition/TranscriptionService.h"
#include "tests/meeting/MeetingHome.h"
#include "tests/support/FakeEngineHome.h"
#include "ui/presentation/Activity.h"
#include "ui/presentation/Spans.h"

#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace orvane;

namespace {

/// Everything that can go on, at a service that never answers.
struct Home
{
    explicit Home(const QString &resources) : meeting(folder.path(), resources) {}

    const QTemporaryDir folder;
    MeetingHome meeting;
    CorrectionModelManager correctionModels{meeting.folders.correctionModels(),
                                            {.address = u"http://127.0.0.1:9"_s, .options = {}}};
    TranscriptionService transcriber{{.engine = meeting.engine,
                                      .pipeline = meeting.pipeline,
                                      .turns = meeting.turns,
                                      .saveRecord = [](const auto &, const auto &) { return std::nullopt; }}};
    TextCorrectionService corrector{
        meeting.settings, correctionModels,
        std::make_unique<LocalLLMEngine>(EngineServer::SearchPath{.resources = folder.path(), .folders = {}},
                                         meeting.registry),
        BuiltInModel::ofThisSystem()};
    RecordProcessor processor{{.history = meeting.history,
                               .corrector = corrector,
                               .transcriber = transcriber,
                               .recordingsFolder = meeting.folders.recordings()}};
    Activity activity{{.settings = meeting.settings,
                       .models = meeting.models,
                       .correctionModels = correctionModels,
                       .transcriber = transcriber,
                       .meeting = meeting.meeting,
                       .processor = processor}};

    [[nodiscard]] QVariant first(const QString &role) const { return activity.rows().value(0).value(role); }
};

} // namespace

class TestActivity : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_engine.behave({.answers = {{u"/inference"_s, {FakeAnswer::never()}}}});
        m_home = std::make_unique<Home>(m_engine.resources());
    }
    void cleanup()
    {
        m_home.reset();
        QTRY_VERIFY(m_engine.allEnded());
        QCoreApplication::processEvents();
    }

    void wordsADownload_data()
    {
        QTest::addColumn<DownloadProgress>("progress");
        QTest::addColumn<QString>("text");
        QTest::newRow("offline") << DownloadProgress{.isWaitingForNetwork = true}
                                 << u"Жду подключения к сети…"_s;
        QTest::newRow("asking") << DownloadProgress{} << u"Соединяюсь…"_s;
        QTest::newRow("first bytes") << DownloadProgress{.receivedBytes = 0, .totalBytes = 75'000'000}
                                     << u"0 МБ из 75 МБ"_s;
        QTest::newRow("on its way") << DownloadProgress{.receivedBytes = 960'000'000,
                                                        .totalBytes = 1'500'000'000,
                                                        .bytesPerSecond = 24e6,
                                                        .remainingMs = 22'500}
                                    << u"960 МБ из 1,5 ГБ · 24 МБ/с · осталось 23 с"_s;
    }

    void wordsADownload()
    {
        QFETCH(const DownloadProgress, progress);
        QFETCH(const QString, text);
        QCOMPARE(Spans::download(progress), text);
    }

    void showsDownloads()
    {
        m_home->correctionModels.download(u"qwen2.5-3b"_s);
        QTRY_COMPARE(m_home->activity.count(), 1);
        QCOMPARE(m_home->first(u"title"_s), u"Загрузка Qwen2.5 3B Instruct"_s);
        QCOMPARE(m_home->first(u"progress"_s), -1);
        m_home->activity.cancel(0);
        QTRY_COMPARE(m_home->activity.count(), 0);
    }

    void showsFiles()
    {
        const QString audio = m_home->folder.filePath(u"a.wav"_s);
        test::put(audio, QByteArray(1000, 'x'));
        const auto path = m_home->meeting.models.localPath(u"base"_s);
        spawnPublished(m_home->transcriber.transcribe(
            {.audioPath = audio, .model = {.id = u"base"_s, .path = path}, .language = u"ru"_s}));
        QTRY_COMPARE(m_home->activity.count(), 1);
        QCOMPARE(m_home->first(u"title"_s), u"Расшифровка файла"_s);
        m_home->activity.cancel(0);
        QTRY_COMPARE(m_home->activity.count(), 0);
        QVERIFY(!m_home->transcriber.isWorking());
    }

    void showsMeetings()
    {
        MeetingTranscriber &meeting = m_home->meeting.meeting;
        spawn(meeting.start());
        QTRY_VERIFY(meeting.isRunning());
        QCOMPARE(m_home->activity.count(), 0); // the page shows it
        m_home->meeting.microphone->current->hear(1);
        meeting.stop();
        QTRY_COMPARE(m_home->activity.count(), 1);
        QCOMPARE(m_home->first(u"cancelText"_s),
                 u"Прервать расшифровку — аудиозапись совещания останется на диске"_s);
        QTRY_COMPARE(m_engine.requests(u"/inference"_s).size(), 1);
        m_home->activity.cancel(0);
        QTRY_COMPARE(m_home->activity.count(), 0);
        QCOMPARE(meeting.outcome(), MeetingState::Outcome::Cancelled);
    }

    void showsLeftovers()
    {
        MeetingTranscriber &meeting = m_home->meeting.meeting;
        m_engine.behave({.answers = {{u"/inference"_s, {{.status = 500}}}}});
        spawn(meeting.start());
        QTRY_VERIFY(meeting.isRunning());
        m_home->meeting.microphone->current->hear(1);
        meeting.stop();
        QTRY_COMPARE(m_home->first(u"title"_s), u"Нерасшифрованная запись"_s);

        const QSignalSpy refused(&m_home->activity, &Activity::refused);
        {
            const EngineTurns::Turn taken = m_home->meeting.turns.take();
            m_home->activity.transcribe(0);
        }
        QCOMPARE(refused.value(0).value(0), EngineTurns::waitText());
        m_home->activity.transcribe(0);
        QVERIFY(meeting.isTranscribing());
        QTRY_VERIFY(!meeting.isTranscribing()); // it failed again
        QTRY_COMPARE(m_home->first(u"title"_s), u"Нерасшифрованная запись"_s);

        m_home->activity.cancel(0);
        QTRY_COMPARE(m_home->activity.count(), 0);
        QCOMPARE(meeting.leftovers().size(), 0);
        QCOMPARE(m_home->meeting.audio().size(), 1);
    }

private:
    const FakeEngineHome m_engine{u"whisper-server"_s};
    std::unique_ptr<Home> m_home;
};

QTEST_GUILESS_MAIN(TestActivity)
#include "tst_activity.moc"
