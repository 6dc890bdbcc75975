#include "correction/TextCorrectionService.h"
#include "dictation/DictationController.h"
#include "engine/EngineProcessRegistry.h"
#include "engine/PortReservation.h"
#include "models/ModelManager.h"
#include "recognition/WhisperServerEngine.h"
#include "settings/AppSettings.h"
#include "settings/UserDefaults.h"
#include "tests/support/FakeDictationSurroundings.h"
#include "tests/support/FakeEngineHome.h"
#include "tests/support/SoundServer.h"
#include "tests/support/TaskResult.h"

#include <QDir>
#include <QSignalSpy>
#include <QTest>

#include <sys/resource.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace orvane;
using namespace orvane::test;
using State = DictationState;
using Ending = FakeAnswer::Ending;

namespace {

const QString inference = u"/inference"_s;
const QString completions = u"/v1/chat/completions"_s;
const QString microphone = u"mic"_s;
const FakeAnswer recognised{.body = R"({"segments":[{"start":0,"end":1,"text":" hello"},)"
                                    R"({"start":1,"end":2,"text":" world\n"}]})"};
const FakeAnswer corrected{.body = R"({"choices":[{"message":{"content":"Hello, world."}}]})"};

FakeEngineBehaviour answering(const FakeAnswer &speech, const FakeAnswer &text = corrected)
{
    return {.answers = {{u"/health"_s, {{.status = 200}}}, {inference, {speech}}, {completions, {text}}}};
}

} // namespace

/// The whole of a dictation but for the keys and the screen: a real microphone, and engines that answer as
/// they are told.
class TestDictationController : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void pastes_data();
    void pastes();
    void keepsTheTextWhenProcessingFails_data();
    void keepsTheTextWhenProcessingFails();
    void saysWhenProcessingIsSwitchedOff();
    void hintsAtMissingModelOnce();
    void saysWhereTheTextIs_data();
    void saysWhereTheTextIs();
    void leavesTheNextDictationInPeace();
    void saysWhatFailed_data();
    void saysWhatFailed();
    void guidesBeforeRecording_data();
    void guidesBeforeRecording();
    void dropsASlip();
    void ignoresPressesInOtherStates();
    void cancels_data();
    void cancels();
    void beginsAnewAfterCancelling();
    void modeChosenWhileRecordingCounts();
    void microphoneIsUnplugged();
    void recordingEndsByItself();
    void runsBesideAFile();
    void processedByARealServer();
    void destroyed_data();
    void destroyed();

private:
    [[nodiscard]] QString file(const QString &name) const { return m_home->resources() + u'/' + name; }
    void install(const QString &path) const;
    void installLanguageModel() const
    {
        install(m_correctionModels->localPath(CorrectionModel::catalog().first().id));
    }
    void makeController();
    /// Until more than a slip has been recorded.
    void record();
    void reach(State state);

    std::unique_ptr<SoundServer> m_sound;
    std::unique_ptr<FakeEngineHome> m_home;
    std::unique_ptr<EngineProcessRegistry> m_registry;
    std::unique_ptr<UserDefaults> m_defaults;
    std::unique_ptr<AppSettings> m_settings;
    std::unique_ptr<ModelManager> m_models;
    std::unique_ptr<CorrectionModelManager> m_correctionModels;
    std::unique_ptr<WhisperServerEngine> m_engine;
    std::unique_ptr<TextCorrectionService> m_corrector;
    std::unique_ptr<FakeIndicator> m_indicator;
    std::unique_ptr<FakeGuidance> m_guidance;
    std::unique_ptr<FakeInjector> m_injector;
    std::unique_ptr<DictationController> m_dictation;
};

void TestDictationController::initTestCase()
{
    if (!SoundServer::isInstalled())
        QSKIP("there is no PulseAudio to make a microphone with");
}

void TestDictationController::init()
{
    m_sound = std::make_unique<SoundServer>();
    m_sound->enter();
    m_sound->plugIn(microphone);

    m_home = std::make_unique<FakeEngineHome>(u"whisper-server"_s);
    FakeEngineHome::install(m_home->engineFolder(), u"llama-server"_s);
    m_home->behave(answering(recognised));
    m_registry = std::make_unique<EngineProcessRegistry>(QString());
    m_defaults = std::make_unique<UserDefaults>(file(u"settings.json"_s));
    m_settings = std::make_unique<AppSettings>(*m_defaults);
    m_models = std::make_unique<ModelManager>(file(u"models"_s));
    m_correctionModels = std::make_unique<CorrectionModelManager>(file(u"texts"_s));
    const EngineServer::SearchPath search{.resources = m_home->resources(), .folders = {}};
    m_engine = std::make_unique<WhisperServerEngine>(search, *m_registry, m_home->resources());
    m_corrector = std::make_unique<TextCorrectionService>(
        *m_settings, *m_correctionModels, std::make_unique<LocalLLMEngine>(search, *m_registry),
        BuiltInModel::ofThisSystem());
    install(m_models->localPath(WhisperModel::catalog().first().id));
    m_models->refresh();
    makeController();
}

void TestDictationController::makeController()
{
    m_indicator = std::make_unique<FakeIndicator>();
    m_guidance = std::make_unique<FakeGuidance>();
    m_injector = std::make_unique<FakeInjector>();
    m_dictation =
        std::make_unique<DictationController>(DictationController::Collaborators{.models = *m_models,
                                                                                 .settings = *m_settings,
                                                                                 .defaults = *m_defaults,
                                                                                 .corrector = *m_corrector,
                                                                                 .engine = *m_engine,
                                                                                 .injector = *m_injector,
                                                                                 .indicator = *m_indicator,
                                                                                 .guidance = *m_guidance},
                                              QStringLiteral(ORVANE_RESOURCES));
}

void TestDictationController::cleanup()
{
    m_dictation.reset();
    m_corrector.reset();
    m_engine.reset();
    QTRY_VERIFY(m_home->allEnded());
    QCoreApplication::processEvents(); // what waited for that goes on
}

void TestDictationController::install(const QString &path) const
{
    QVERIFY(QDir().mkpath(QFileInfo(path).path()));
    QFile model(path);
    QVERIFY(model.open(QFile::WriteOnly));
    model.close();
    m_correctionModels->refresh();
}

void TestDictationController::record()
{
    const QSignalSpy levels(&m_dictation->recorder(), &AudioRecorder::levelChanged);
    m_dictation->start();
    QTRY_COMPARE(m_dictation->state(), State::Recording);
    QTRY_VERIFY(levels.size() > 8);
}

void TestDictationController::reach(State state)
{
    record();
    if (state == State::Recording)
        return;
    m_dictation->stop();
    QTRY_COMPARE(m_dictation->state(), state);
    if (state == State::Transcribing)
        QTRY_COMPARE(m_home->requests(inference).size(), 1);
    else
        QTRY_COMPARE(m_home->requests(completions).size(), 1);
}

void TestDictationController::pastes_data()
{
    QTest::addColumn<bool>("hasLanguageModel");
    QTest::addColumn<QByteArray>("segments");
    QTest::addColumn<QStringList>("pasted");
    QTest::newRow("as recognised") << false << recognised.body << QStringList{u"hello world"_s};
    QTest::newRow("corrected") << true << recognised.body << QStringList{u"Hello, world."_s};
    QTest::newRow("silence") << true << QByteArray(R"({"segments":[{"start":0,"end":1,"text":" \n"}]})")
                             << QStringList();
}

void TestDictationController::pastes()
{
    QFETCH(const bool, hasLanguageModel);
    QFETCH(const QByteArray, segments);
    QFETCH(const QStringList, pasted);
    if (hasLanguageModel)
        installLanguageModel();
    m_home->behave(answering({.body = segments}));

    record();
    QVERIFY(m_indicator->isShown);
    QVERIFY(m_dictation->interceptsEscape());
    QTRY_COMPARE(m_home->launches().size(), 1); // the engine starts while the user speaks
    m_dictation->stop();
    QTRY_COMPARE(m_dictation->state(), State::Idle);
    QVERIFY(!m_indicator->isShown);
    QVERIFY(!m_dictation->interceptsEscape());
    QTRY_COMPARE(m_injector->texts, pasted);
    QCOMPARE(m_dictation->lastError(), QString());

    const QByteArray body = m_home->requests(inference).constFirst().body();
    for (const char *field : {"name=\"language\"\r\n\r\nauto\r\n", "name=\"suppress_nst\"\r\n\r\ntrue\r\n"})
        QVERIFY2(body.contains(field), field);
}

void TestDictationController::keepsTheTextWhenProcessingFails_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<QString>("reason");
    QTest::newRow("server error") << 500 << QByteArray() << u"HTTP 500"_s;
    QTest::newRow("blank answer") << 200 << QByteArray(R"({"choices":[{"message":{"content":" \n"}}]})")
                                  << u"Модель ничего не ответила."_s;
}

void TestDictationController::keepsTheTextWhenProcessingFails()
{
    QFETCH(const int, status);
    QFETCH(const QByteArray, answer);
    QFETCH(const QString, reason);
    installLanguageModel();
    m_settings->setDictationMode(DictationMode::Email);
    m_home->behave(answering(recognised, {.status = status, .body = answer}));
    record();
    m_dictation->stop();
    QTRY_COMPARE(m_injector->texts, QStringList{u"hello world"_s});
    QVERIFY2(m_dictation->lastError().contains(reason), qPrintable(m_dictation->lastError()));
    QTRY_COMPARE(m_indicator->notices, QStringList{m_dictation->lastError()});
}

void TestDictationController::saysWhenProcessingIsSwitchedOff()
{
    installLanguageModel();
    m_home->behave(answering(recognised, FakeAnswer::never()));
    reach(State::Correcting);
    m_settings->setTextCorrectionEnabled(false);
    QTRY_COMPARE(m_injector->texts, QStringList{u"hello world"_s});
    QVERIFY2(m_dictation->lastError().contains(u"выключена в настройках"_s),
             qPrintable(m_dictation->lastError()));
}

void TestDictationController::hintsAtMissingModelOnce()
{
    m_settings->setDictationMode(DictationMode::Email);
    for (qsizetype i = 1; i <= 2; ++i) {
        record();
        m_dictation->stop();
        QTRY_COMPARE(m_injector->texts.size(), i);
        QCOMPARE(m_injector->texts.constLast(), u"hello world"_s);
        QTRY_COMPARE(m_guidance->titles, QStringList{u"Нужна модель для этого режима"_s});
    }
    QVERIFY(m_defaults->boolean(u"dictationModeModelHintShown"_s).value_or(false));
}

void TestDictationController::saysWhereTheTextIs_data()
{
    QTest::addColumn<TextInjector::Outcome>("outcome");
    QTest::addColumn<QString>("notice");
    QTest::newRow("clipboard") << TextInjector::Outcome::LeftOnClipboard
                               << u"Текст в буфере обмена — вставьте его: Ctrl+V"_s;
    QTest::newRow("nowhere") << TextInjector::Outcome::Nothing
                             << u"Текст не вставлен: буфер обмена недоступен."_s;
}

void TestDictationController::saysWhereTheTextIs()
{
    QFETCH(const TextInjector::Outcome, outcome);
    QFETCH(const QString, notice);
    m_injector->outcome = outcome;
    record();
    m_dictation->stop();
    QTRY_COMPARE(m_indicator->notices, QStringList{notice});
}

void TestDictationController::leavesTheNextDictationInPeace()
{
    m_settings->setDictationMode(DictationMode::Email); // for which there is no model
    m_injector->outcome = TextInjector::Outcome::LeftOnClipboard;
    m_injector->delay = 300ms;
    record();
    m_dictation->stop();
    QTRY_COMPARE(m_injector->texts.size(), 1);
    record(); // while the first text is still being pasted
    QTest::qWait(400);
    QVERIFY(m_indicator->notices.isEmpty() && m_guidance->titles.isEmpty());
    QCOMPARE(m_dictation->state(), State::Recording);
}

void TestDictationController::saysWhatFailed_data()
{
    QTest::addColumn<Ending>("ending");
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("text");
    QTest::newRow("engine dies") << Ending::EngineDies << 200 << u"Ошибка распознавания: "_s;
    QTest::newRow("refused") << Ending::Whole << 500 << u"Ошибка распознавания: "_s;
    QTest::newRow("no such engine") << Ending::Whole << 0 << u"whisper"_s;
    QTest::newRow("model deleted meanwhile") << Ending::Whole << -1 << u"Сначала скачайте модель Whisper"_s;
}

void TestDictationController::saysWhatFailed()
{
    QFETCH(const Ending, ending);
    QFETCH(const int, status);
    QFETCH(const QString, text);
    m_home->behave(answering({.status = status, .ending = ending}));
    if (status == 0)
        QVERIFY(QFile::remove(m_home->executable()));
    record();
    if (status < 0) {
        QVERIFY(QFile::remove(m_models->localPath(WhisperModel::catalog().first().id)));
        m_models->refresh();
    }
    m_dictation->stop();
    QTRY_COMPARE(m_indicator->notices.size(), 1);
    QCOMPARE(m_dictation->state(), State::Idle);
    QVERIFY2(m_dictation->lastError().startsWith(text) || m_dictation->lastError().contains(text),
             qPrintable(m_dictation->lastError()));
    QCOMPARE(m_indicator->notices.constFirst(), m_dictation->lastError());
    QVERIFY(m_injector->texts.isEmpty());
}

void TestDictationController::guidesBeforeRecording_data()
{
    QTest::addColumn<bool>("hasModel");
    QTest::addColumn<QString>("title");
    QTest::newRow("no model") << false << u"Нет модели"_s;
    QTest::newRow("no microphone") << true << u"Не удалось начать запись"_s;
    QTest::newRow("refused") << true << u"Нет доступа к микрофону"_s;
}

void TestDictationController::guidesBeforeRecording()
{
    QFETCH(const bool, hasModel);
    QFETCH(const QString, title);
    if (title == u"Нет доступа к микрофону")
        m_sound->refuseThisProcess(orvaneReserveFreePort(0));
    else if (hasModel)
        m_sound->unplug(microphone);
    else
        QVERIFY(QFile::remove(m_models->localPath(WhisperModel::catalog().first().id)));
    m_models->refresh();

    const TaskResult begun(m_dictation->begin());
    QTRY_VERIFY(begun.isDone());
    QCOMPARE(begun.error(), m_dictation->lastError());
    QCOMPARE(m_guidance->titles, QStringList{title});
    QCOMPARE(m_dictation->state(), State::Idle);
    QVERIFY(m_dictation->lastError().startsWith(title + u": "_s));
    QVERIFY(!m_indicator->isShown);
}

void TestDictationController::dropsASlip()
{
    m_dictation->start();
    QTRY_COMPARE(m_dictation->state(), State::Recording);
    m_dictation->stop();
    QTRY_COMPARE(m_dictation->state(), State::Idle);
    QVERIFY(m_home->requests(inference).isEmpty());
    QVERIFY(m_indicator->notices.isEmpty() && m_dictation->lastError().isEmpty());
}

void TestDictationController::ignoresPressesInOtherStates()
{
    m_home->behave(answering({.body = recognised.body, .delayMs = 300}));
    m_dictation->toggle();
    QCOMPARE(m_dictation->state(), State::Starting);
    m_dictation->toggle();
    m_dictation->cancel();
    QTRY_COMPARE(m_dictation->state(), State::Recording);
    m_dictation->start();
    QTest::qWait(400);
    m_dictation->toggle();
    QCOMPARE(m_dictation->state(), State::Transcribing);
    m_dictation->toggle();
    m_dictation->stop();
    QTRY_COMPARE(m_injector->texts, QStringList{u"hello world"_s});
    QCOMPARE(m_home->requests(inference).size(), 1);
}

void TestDictationController::cancels_data()
{
    QTest::addColumn<State>("state");
    QTest::newRow("recording") << State::Recording;
    QTest::newRow("transcribing") << State::Transcribing;
    QTest::newRow("correcting") << State::Correcting;
}

void TestDictationController::cancels()
{
    QFETCH(const State, state);
    installLanguageModel();
    m_home->behave(
        answering(state == State::Transcribing ? FakeAnswer::never() : recognised, FakeAnswer::never()));
    reach(state);
    m_dictation->cancel();
    QCOMPARE(m_dictation->state(), State::Idle);
    QVERIFY(!m_indicator->isShown);
    QVERIFY(!m_corrector->isCorrecting());
    // The engine stops computing.
    if (state != State::Recording)
        QTRY_COMPARE(m_home->abandoned(state == State::Transcribing ? inference : completions), 1);
    QVERIFY(m_injector->texts.isEmpty());
    QVERIFY(m_dictation->lastError().isEmpty() && m_indicator->notices.isEmpty());
}

void TestDictationController::beginsAnewAfterCancelling()
{
    record();
    m_dictation->cancel();
    record();
    m_dictation->stop();
    QTRY_COMPARE(m_injector->texts, QStringList{u"hello world"_s});
}

void TestDictationController::modeChosenWhileRecordingCounts()
{
    installLanguageModel();
    record();
    m_settings->setDictationMode(DictationMode::Prompt);
    m_dictation->stop();
    QTRY_COMPARE(m_dictation->processingMode(), DictationMode::Prompt);
    QTRY_COMPARE(m_injector->texts.size(), 1);
}

void TestDictationController::microphoneIsUnplugged()
{
    record();
    m_sound->unplug(microphone);
    QTest::qWait(300);
    QCOMPARE(m_dictation->state(), State::Recording);
    m_dictation->stop();
    QTRY_COMPARE(m_injector->texts, QStringList{u"hello world"_s}); // of what was said before
}

void TestDictationController::recordingEndsByItself()
{
    record();
    // The audio thread waits for more files than that.
    rlimit files{};
    getrlimit(RLIMIT_NOFILE, &files);
    const rlimit few{.rlim_cur = 1, .rlim_max = files.rlim_max};
    setrlimit(RLIMIT_NOFILE, &few);
    QThread::msleep(500);
    setrlimit(RLIMIT_NOFILE, &files);
    QTRY_COMPARE(m_injector->texts, QStringList{u"hello world"_s});
    QVERIFY(m_dictation->lastError().startsWith(u"Звуковая система отказала"_s));
    QTRY_COMPARE(m_indicator->notices, QStringList{m_dictation->lastError()});
}

void TestDictationController::runsBesideAFile()
{
    m_home->behave(answering({.body = recognised.body, .delayMs = 1000}));
    const QString model = m_models->localPath(WhisperModel::catalog().first().id);
    const TaskResult file(m_engine->transcribe(std::vector<float>(16'000), model, u"ru"_s));
    QTRY_COMPARE(m_home->requests(inference).size(), 1);
    record();
    m_dictation->stop();
    QTRY_VERIFY(file.isDone());
    QCOMPARE(file.error(), QString());
    QTRY_COMPARE(m_injector->texts, QStringList{u"hello world"_s});
}

void TestDictationController::processedByARealServer()
{
    const QString engine = qEnvironmentVariable("ORVANE_TEST_LLM_ENGINE");
    const QString model = qEnvironmentVariable("ORVANE_TEST_LLM_MODEL");
    if (!QFile::exists(engine) || !QFile::exists(model))
        QSKIP("there is no language model to run");
    const QString fake = m_home->engineFolder() + u"/llama-server"_s;
    QVERIFY(QFile::remove(fake) && QFile::link(engine, fake));
    const QString path = m_correctionModels->localPath(CorrectionModel::catalog().first().id);
    QVERIFY(QDir().mkpath(QFileInfo(path).path()) && QFile::link(model, path));
    m_correctionModels->refresh();
    m_settings->setDictationMode(DictationMode::Prompt);

    record();
    m_dictation->stop();
    QTRY_COMPARE_WITH_TIMEOUT(m_injector->texts.size(), 1, 60'000);
    QCOMPARE(m_dictation->lastError(), QString());
    QVERIFY(!m_injector->texts.constFirst().isEmpty());
    QVERIFY(m_injector->texts.constFirst() != u"hello world"_s);
}

void TestDictationController::destroyed_data()
{
    cancels_data();
}

void TestDictationController::destroyed()
{
    QFETCH(const State, state);
    installLanguageModel();
    m_home->behave(
        answering(state == State::Transcribing ? FakeAnswer::never() : recognised, FakeAnswer::never()));
    reach(state);
    m_dictation.reset();
    QTest::qWait(100);
    QVERIFY(m_injector->texts.isEmpty());
}

QTEST_GUILESS_MAIN(TestDictationController)
#include "tst_dictationcontroller.moc"
