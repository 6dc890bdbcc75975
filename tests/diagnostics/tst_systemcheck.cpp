#include "base/Async.h"
#include "correction/TextCorrectionService.h"
#include "diagnostics/DesktopChecks.h"
#include "diagnostics/SystemCheck.h"
#include "engine/EngineProcessRegistry.h"
#include "engine/EngineTurns.h"
#include "models/ModelManager.h"
#include "recognition/WhisperServerEngine.h"
#include "settings/UserDefaults.h"
#include "tests/support/FakeEngineHome.h"
#include "tests/support/Files.h"
#include "tests/support/TaskResult.h"

#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace orvane;
using namespace std::chrono_literals;

using State = CheckResult::State;

namespace {

const QString inference = u"/inference"_s;

FakeEngineBehaviour answering(const FakeAnswer &answer)
{
    return {.answers = {{inference, {answer}}, {u"/health"_s, {{.status = 200}}}}};
}

/// The services that a check looks at, with a model and an engine of each kind.
struct Home
{
    Home()
    {
        FakeEngineHome::install(engines.engineFolder(), u"llama-server"_s);
        engines.behave(answering({.body = R"({"segments":[]})"}));
        put(models.localPath(u"base"_s), "lmgg");
        put(correctionModels.localPath(u"qwen2.5-1.5b"_s), "GGUF");
        models.refresh();
        correctionModels.refresh();
    }

    static void put(const QString &path, const QByteArray &magic)
    {
        QDir().mkpath(QFileInfo(path).path());
        test::put(path, magic + QByteArray(2'000'000, 'x'));
    }
    [[nodiscard]] EngineServer::SearchPath search() const
    {
        return {.resources = engines.resources(), .folders = {}};
    }
    /// Of a check that is run to its end.
    [[nodiscard]] QMap<QString, CheckResult> results()
    {
        const TaskResult run(check.run());
        QMap<QString, CheckResult> results;
        if (!QTest::qWaitFor([&] { return run.isDone(); }, 60'000))
            return results;
        for (qsizetype i = 0; i < check.count(); ++i) {
            if (const std::optional<CheckResult> result = check.result(i))
                results.insert(check.check(i).id, *result);
        }
        return results;
    }

    const QTemporaryDir folder;
    const StandardFolders folders{
        .applicationSupport = folder.path(), .resources = folder.path(), .temporary = folder.path()};
    FakeEngineHome engines{u"whisper-server"_s};
    EngineProcessRegistry registry{QString()};
    UserDefaults defaults{folder.filePath(u"settings.json"_s)};
    AppSettings settings{defaults};
    ModelManager models{folders.models()};
    CorrectionModelManager correctionModels{folders.correctionModels()};
    EngineTurns turns;
    WhisperServerEngine engine{search(), registry, folder.path()};
    TextCorrectionService corrector{settings, correctionModels,
                                    std::make_unique<LocalLLMEngine>(search(), registry),
                                    BuiltInModel::ofThisSystem()};
    SystemCheck check{{.settings = settings,
                       .models = models,
                       .correctionModels = correctionModels,
                       .engine = engine,
                       .corrector = corrector,
                       .turns = turns,
                       .folders = folders,
                       .listeningTime = 1ms}};
};

} // namespace

class TestSystemCheck : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_home = std::make_unique<Home>(); }
    void cleanup()
    {
        m_home->engine.stop();
        m_home->corrector.local().stop();
        QTRY_VERIFY(m_home->engines.allEnded());
        m_home.reset();
    }

    void findsTheEnginesAnswering()
    {
        const auto results = m_home->results();
        QCOMPARE(results.value(u"speech-engine"_s).state, State::Good);
        QCOMPARE(results.value(u"language-engine"_s).state, State::Good);
        QCOMPARE(results.value(u"models"_s).state, State::Good);
        QCOMPARE(m_home->engines.requests(inference).size(), 1);
        QVERIFY(!m_home->corrector.local().isRunning()); // it takes gigabytes
        // There is neither a screen nor the module that records.
        QCOMPARE(results.value(u"keys"_s).state, State::Unknown);
        QCOMPARE(results.value(u"paste"_s).state, State::Unknown);
        QCOMPARE(results.value(u"microphone"_s).state, State::Bad);
        QVERIFY(m_home->check.hasFault());
        for (const CheckResult &result : results)
            QVERIFY(!result.text.isEmpty() && result.text.count(u'\n') == 0);
    }

    void findsFaultsOfTheEngines_data()
    {
        QTest::addColumn<QString>("fault");
        QTest::addColumn<QString>("speech");
        QTest::addColumn<QString>("language");
        QTest::newRow("no engines") << u"engines"_s << u"whisper-server"_s << u"llama-server"_s;
        QTest::newRow("do not start") << u"start"_s << u"Base"_s << u"Qwen"_s;
        QTest::newRow("recognises nothing") << u"answer"_s << u"Base"_s << QString();
        QTest::newRow("no speech model") << u"model"_s << u"base"_s << QString();
    }

    void findsFaultsOfTheEngines()
    {
        QFETCH(const QString, fault);
        QFETCH(const QString, speech);
        QFETCH(const QString, language);
        if (fault == "engines"_L1)
            QVERIFY(QDir(m_home->engines.engineFolder()).removeRecursively());
        else if (fault == "start"_L1)
            m_home->engines.behave({.exitAfterMs = 1});
        else if (fault == "answer"_L1)
            m_home->engines.behave(answering({.status = 500}));
        else
            QVERIFY(QFile::remove(m_home->models.localPath(u"base"_s)));
        m_home->models.refresh();

        const auto results = m_home->results();
        const CheckResult found = results.value(u"speech-engine"_s);
        QCOMPARE(found.state, State::Bad);
        QVERIFY2(found.text.contains(speech), qPrintable(found.text));
        const CheckResult other = results.value(u"language-engine"_s);
        QCOMPARE(other.state, language.isEmpty() ? State::Good : State::Bad);
        QVERIFY2(other.text.contains(language), qPrintable(other.text));
    }

    void disturbsNobody()
    {
        const EngineTurns::Turn turn = m_home->turns.take();
        m_home->settings.setTextCorrectionEnabled(false);
        const auto results = m_home->results();
        QCOMPARE(results.value(u"speech-engine"_s).state, State::Unknown);
        QCOMPARE(results.value(u"speech-engine"_s).text, EngineTurns::waitText());
        QCOMPARE(results.value(u"language-engine"_s).state, State::Unknown);
        QCOMPARE(m_home->engines.launches().size(), 0);
    }

    void givesItsTurnBackWhenItIsStopped()
    {
        m_home->engines.behave(answering(FakeAnswer::never()));
        std::stop_source stop;
        const TaskResult run(m_home->check.run(stop.get_token()));
        QTRY_COMPARE_WITH_TIMEOUT(m_home->engines.requests(inference).size(), 1, 20'000);
        QVERIFY(m_home->turns.isTaken());
        stop.request_stop();
        QTRY_VERIFY(run.isCancelled());
        QTRY_VERIFY(!m_home->check.isRunning());
        QVERIFY(!m_home->turns.isTaken());
    }

    void runsAllChecksAtOnce()
    {
        const auto slow = [](const std::stop_token &stop) {
            return [](std::stop_token waiting) -> QCoro::Task<CheckResult> {
                co_await sleepFor(1h, waiting);
                co_return CheckResult();
            }(stop);
        };
        const auto broken = [](const std::stop_token &) {
            return []() -> QCoro::Task<CheckResult> {
                co_await sleepFor(1ms);
                throw Error(u"broken"_s);
            }();
        };
        CheckRun run({{.id = u"slow"_s, .name = u"Микрофон", .run = slow},
                      {.id = u"broken"_s, .name = u"Микрофон", .run = broken}});
        std::stop_source stop;
        const TaskResult first(run.run(stop.get_token()));
        const TaskResult second(run.run());
        QTRY_VERIFY(run.hasFault());
        QCOMPARE(run.result(1)->text, u"broken"_s);
        QVERIFY(run.isRunning() && !run.result(0));
        stop.request_stop();
        QTRY_VERIFY(first.isCancelled() && second.succeeded());
        QVERIFY(!run.isRunning());
    }

    void advisesForTheDesktop()
    {
        const QString general = DesktopChecks::keyAdvice(u"XFCE"_s);
        const QString gnome = DesktopChecks::keyAdvice(u"ubuntu:GNOME"_s);
        const QString kde = DesktopChecks::keyAdvice(u"KDE"_s);
        QVERIFY(general != gnome && gnome != kde && kde != general);
    }

private:
    std::unique_ptr<Home> m_home;
};

QTEST_MAIN(TestSystemCheck)
#include "tst_systemcheck.moc"
