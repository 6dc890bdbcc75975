#include "audio/SampleRate.h"
#include "dictation/DictationController.h"
#include "engine/PortReservation.h"
#include "tests/support/FakeEngineHome.h"
#include "tests/support/Rows.h"
#include "tests/support/ServicesHome.h"
#include "tests/support/SoundServer.h"
#include "tests/support/TaskResult.h"

#include <QSignalSpy>

using namespace Qt::StringLiterals;
using namespace orvane;
using namespace orvane::test;
using State = DictationState;
using Ending = FakeAnswer::Ending;
using Outcome = TextInjector::Outcome;

namespace {

const QString inference = u"/inference"_s;
const QString completions = u"/v1/chat/completions"_s;
const QString microphone = u"mic"_s;
const QString helloWorld = u"hello world"_s;
const FakeAnswer recognised{.body = R"({"segments":[{"start":0,"end":1,"text":" hello"},)"
                                    R"({"start":1,"end":2,"text":" world\n"}]})"};
const FakeAnswer silence{.body = R"({"segments":[{"start":0,"end":1,"text":" \n"}]})"};
const FakeAnswer corrected{.body = R"({"choices":[{"message":{"content":"Hello, world."}}]})"};
const FakeAnswer failed{.status = 500};

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
    void initTestCase()
    {
        if (!SoundServer::isInstalled())
            QSKIP("there is no PulseAudio to make a microphone with");
    }

    void init()
    {
        m_sound = std::make_unique<SoundServer>();
        m_sound->enter();
        m_sound->plugIn(microphone);

        m_engines = std::make_unique<FakeEngineHome>(u"whisper-server"_s);
        FakeEngineHome::install(m_engines->engineFolder(), u"llama-server"_s);
        m_engines->behave(answering(recognised));
        const QString module = u"/orvane-capture.so"_s;
        QVERIFY(QFile::link(QStringLiteral(ORVANE_RESOURCES) + module, m_engines->resources() + module));
        m_home = std::make_unique<ServicesHome>();
        m_services = std::make_unique<AppServices>(m_home->onDesktop(m_engines->resources()));
        ServicesHome::install(m_services->models(), WhisperModel::catalog().first());
    }

    void cleanup()
    {
        m_services.reset();
        QTRY_VERIFY(m_engines->allEnded());
        QCoreApplication::processEvents(); // what waited for that goes on
    }

    void ends_data()
    {
        const Rows<FakeAnswer, std::optional<FakeAnswer>, Outcome, QStringList, QString> row(
            "speech", "model", "outcome", "pasted", "notice");
        row("as recognised", recognised, {}, Outcome::Pasted, {helloWorld}, {});
        row("corrected", recognised, corrected, Outcome::Pasted, {u"Hello, world."_s}, {});
        row("silence", silence, corrected, Outcome::Pasted, {}, {});
        row("model fails", recognised, failed, Outcome::Pasted, {helloWorld}, u"HTTP 500"_s);
        row("engine dies", {.ending = Ending::EngineDies}, {}, Outcome::Pasted, {},
            u"Ошибка распознавания: "_s);
        row("into the clipboard", recognised, {}, Outcome::LeftOnClipboard, {helloWorld},
            u"Текст в буфере обмена — вставьте его: Ctrl+V"_s);
        row("nowhere", recognised, {}, Outcome::Nothing, {helloWorld},
            u"Текст не вставлен: буфер обмена недоступен."_s);
    }

    void ends()
    {
        QFETCH(const FakeAnswer, speech);
        QFETCH(const std::optional<FakeAnswer>, model);
        QFETCH(const Outcome, outcome);
        QFETCH(const QStringList, pasted);
        QFETCH(const QString, notice);
        if (model)
            installLanguageModel();
        m_engines->behave(answering(speech, model.value_or(FakeAnswer())));
        m_home->injector.outcome = outcome;

        record();
        QVERIFY(m_home->indicator.isShown);
        QVERIFY(dictation().interceptsEscape());
        QTRY_COMPARE(m_engines->launches().size(), 1); // the engine starts while the user speaks
        dictation().stop();
        QTRY_COMPARE(dictation().state(), State::Idle);
        QVERIFY(!m_home->indicator.isShown);
        QVERIFY(!dictation().interceptsEscape());
        QTRY_COMPARE(m_home->injector.texts, pasted);
        QTRY_COMPARE(m_home->indicator.notices.size(), notice.isEmpty() ? 0 : 1);
        const QString said = m_home->indicator.notices.value(0);
        QVERIFY2(said.contains(notice), qPrintable(said));
        if (outcome != Outcome::LeftOnClipboard)
            QCOMPARE(dictation().lastError(), said);

        const QByteArray body = m_engines->requests(inference).constFirst().body();
        for (const char *field :
             {"name=\"language\"\r\n\r\nauto\r\n", "name=\"suppress_nst\"\r\n\r\ntrue\r\n"})
            QVERIFY2(body.contains(field), field);
    }

    void modeIsThatOfTheEnd()
    {
        installLanguageModel();
        m_engines->behave(answering(recognised, FakeAnswer::never()));
        record();
        m_services->settings().setDictationMode(DictationMode::Prompt);
        dictation().stop();
        QTRY_COMPARE(dictation().processingMode(), DictationMode::Prompt);
        QTRY_COMPARE(m_engines->requests(completions).size(), 1);
        m_services->settings().setTextCorrectionEnabled(false); // which ends it
        QTRY_COMPARE(m_home->injector.texts, QStringList{helloWorld});
        QVERIFY2(dictation().lastError().contains(u"выключена в настройках"_s),
                 qPrintable(dictation().lastError()));
    }

    void hintsAtMissingModelOnce()
    {
        m_services->settings().setDictationMode(DictationMode::Email);
        for (qsizetype i = 1; i <= 2; ++i) {
            record();
            dictation().stop();
            QTRY_COMPARE(m_home->injector.texts.size(), i);
            QCOMPARE(m_home->injector.texts.constLast(), helloWorld);
            QTRY_COMPARE(m_home->guidance.titles, QStringList{u"Нужна модель для этого режима"_s});
        }
    }

    void leavesTheNextDictationInPeace()
    {
        m_services->settings().setDictationMode(DictationMode::Email); // for which there is no model
        m_home->injector.outcome = Outcome::LeftOnClipboard;
        m_home->injector.end = OneTimeEvent::create();
        record();
        dictation().stop();
        QTRY_COMPARE(m_home->injector.texts.size(), 1);
        record(); // while the first text is still being pasted
        m_home->injector.end->happen();
        QTRY_COMPARE(m_home->injector.ended, 1);
        QVERIFY(m_home->indicator.notices.isEmpty() && m_home->guidance.titles.isEmpty());
        QCOMPARE(dictation().state(), State::Recording);
    }

    void modelIsDeletedMeanwhile()
    {
        record();
        QVERIFY(QFile::remove(model()));
        m_services->models().refresh();
        dictation().stop();
        QTRY_COMPARE(m_home->indicator.notices.size(), 1);
        QVERIFY(dictation().lastError().startsWith(u"Сначала скачайте модель Whisper"_s));
        QCOMPARE(m_home->indicator.notices.constFirst(), dictation().lastError());
    }

    void guidesBeforeRecording_data()
    {
        const Rows<QString> row("title");
        row("no model", u"Нет модели"_s);
        row("no microphone", u"Не удалось начать запись"_s);
        row("refused", u"Нет доступа к микрофону"_s);
    }

    void guidesBeforeRecording()
    {
        QFETCH(const QString, title);
        if (title == u"Нет доступа к микрофону")
            m_sound->refuseThisProcess(orvaneReserveFreePort(0));
        else if (title == u"Не удалось начать запись")
            m_sound->unplug(microphone);
        else
            QVERIFY(QFile::remove(model()));
        m_services->models().refresh();

        const auto begun = finished(dictation().begin());
        QCOMPARE(begun.error(), dictation().lastError());
        QCOMPARE(m_home->guidance.titles, QStringList{title});
        QCOMPARE(dictation().state(), State::Idle);
        QVERIFY(dictation().lastError().startsWith(title + u": "_s));
        QVERIFY(!m_home->indicator.isShown);
    }

    void dropsASlip()
    {
        dictation().start();
        QTRY_COMPARE(dictation().state(), State::Recording);
        dictation().stop();
        QTRY_COMPARE(dictation().state(), State::Idle);
        QVERIFY(m_engines->requests(inference).isEmpty());
        QVERIFY(m_home->indicator.notices.isEmpty() && dictation().lastError().isEmpty());
    }

    void ignoresPressesInOtherStates()
    {
        m_engines->behave(answering({.body = recognised.body, .delayMs = 300}));
        const QSignalSpy levels(&dictation().recorder(), &AudioRecorder::levelChanged);
        dictation().toggle();
        QCOMPARE(dictation().state(), State::Starting);
        dictation().toggle();
        dictation().cancel();
        QTRY_COMPARE(dictation().state(), State::Recording);
        dictation().start();
        QTRY_VERIFY(levels.size() > moreThanASlip);
        dictation().toggle();
        QCOMPARE(dictation().state(), State::Transcribing);
        dictation().toggle();
        dictation().stop();
        QTRY_COMPARE(m_home->injector.texts, QStringList{helloWorld});
        QCOMPARE(m_engines->requests(inference).size(), 1);
    }

    void abandoned_data()
    {
        const Rows<State, bool> row("state", "isDestroyed");
        row("recording", State::Recording, false);
        row("transcribing", State::Transcribing, false);
        row("correcting", State::Correcting, false);
        row("destroyed while recording", State::Recording, true);
        row("destroyed while transcribing", State::Transcribing, true);
        row("destroyed while correcting", State::Correcting, true);
    }

    void abandoned()
    {
        QFETCH(const State, state);
        QFETCH(const bool, isDestroyed);
        installLanguageModel();
        m_engines->behave(
            answering(state == State::Transcribing ? FakeAnswer::never() : recognised, FakeAnswer::never()));
        record();
        if (state != State::Recording)
            dictation().stop();
        QTRY_COMPARE(dictation().state(), state);
        const QString request = state == State::Transcribing ? inference : completions;
        const qsizetype requests = state == State::Recording ? 0 : 1;
        QTRY_COMPARE(m_engines->requests(request).size(), requests);
        if (isDestroyed) {
            m_services.reset();
            QTRY_VERIFY(m_engines->allEnded());
        } else {
            dictation().cancel();
            QCOMPARE(dictation().state(), State::Idle);
            QVERIFY(!m_home->indicator.isShown);
            QVERIFY(!m_services->corrector().isCorrecting());
            QTRY_COMPARE(m_engines->abandoned(request), requests); // the engine stops computing
            QCOMPARE(dictation().lastError(), QString());
            m_engines->behave(answering(recognised));
            record();
        }
        QVERIFY(m_home->injector.texts.isEmpty() && m_home->indicator.notices.isEmpty());
        if (isDestroyed)
            return;
        dictation().stop();
        QTRY_COMPARE(m_home->injector.texts, QStringList{u"Hello, world."_s});
    }

    void recordingEndsByItself()
    {
        record();
        SoundServer::breakRecordingHere();
        QTRY_COMPARE(m_home->injector.texts, QStringList{helloWorld});
        QVERIFY(dictation().lastError().startsWith(u"Звуковая система отказала"_s));
        QTRY_COMPARE(m_home->indicator.notices, QStringList{dictation().lastError()});
        record(); // the next one runs
    }

    void runsBesideAFile()
    {
        m_engines->behave(answering({.body = recognised.body, .delayMs = 1000}));
        const TaskResult file(
            m_services->whisperEngine().transcribe(std::vector<float>(sampleRate), model(), u"ru"_s));
        QTRY_COMPARE(m_engines->requests(inference).size(), 1);
        record();
        dictation().stop();
        QTRY_VERIFY(file.isDone());
        QCOMPARE(file.error(), QString());
        QTRY_COMPARE(m_home->injector.texts, QStringList{helloWorld});
    }

    void processedByARealServer()
    {
        const QString engine = qEnvironmentVariable("ORVANE_TEST_LLM_ENGINE");
        const QString languageModel = qEnvironmentVariable("ORVANE_TEST_LLM_MODEL");
        if (!QFile::exists(engine) || !QFile::exists(languageModel))
            QSKIP("there is no language model to run");
        installLanguageModel(languageModel);
        qputenv("LLAMA_ARG_THREADS", "1"); // two wait for each other where other programs run beside
        const QString fake = m_engines->engineFolder() + u"/llama-server"_s;
        QVERIFY(QFile::remove(fake) && QFile::link(engine, fake));
        m_services->settings().setDictationMode(DictationMode::Prompt);

        record();
        dictation().stop();
        QTRY_COMPARE_WITH_TIMEOUT(m_home->injector.texts.size(), 1, 240'000);
        QCOMPARE(dictation().lastError(), QString());
        QVERIFY(!m_home->injector.texts.constFirst().isEmpty());
        QVERIFY(m_home->injector.texts.constFirst() != helloWorld);
    }

private:
    static constexpr qsizetype moreThanASlip = 8; // changes of the level

    [[nodiscard]] DictationController &dictation() { return *m_services->dictation(); }
    [[nodiscard]] QString model() { return m_services->models().localPath(WhisperModel::catalog().first()); }

    void installLanguageModel(const QString &file = {})
    {
        const QString path = m_services->correctionModels().localPath(CorrectionModel::catalog().first());
        put(path, {});
        if (!file.isEmpty())
            QVERIFY(QFile::remove(path) && QFile::link(file, path));
        m_services->correctionModels().refresh();
    }

    void record()
    {
        const QSignalSpy levels(&dictation().recorder(), &AudioRecorder::levelChanged);
        dictation().start();
        QTRY_COMPARE(dictation().state(), State::Recording);
        QTRY_VERIFY(levels.size() > moreThanASlip);
    }

    std::unique_ptr<SoundServer> m_sound;
    std::unique_ptr<FakeEngineHome> m_engines;
    std::unique_ptr<ServicesHome> m_home;
    std::unique_ptr<AppServices> m_services;
};

QTEST_GUILESS_MAIN(TestDictationController)
#include "tst_dictationcontroller.moc"
