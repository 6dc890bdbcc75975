#include "audio/SampleRate.h"
#include "audio/WavFileWriter.h"
#include "base/Async.h"
#include "tests/support/FakeEngineHome.h"
#include "tests/support/ServicesHome.h"
#include "tests/support/TaskResult.h"

#include <QFile>
#include <QTcpServer>
#include <QTest>

#include <QCoroCore>

using namespace Qt::StringLiterals;
using namespace orvane;
using namespace orvane::test;

class AppServicesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_home = std::make_unique<ServicesHome>(); }

    void findsWhatTheEarlierProductLeft()
    {
        TranscriptRecord record;
        record.text = u"из прежней версии"_s;
        put(m_home->path(u"Vesk/History/"_s + uuidText(record.id) + u".json"_s), record.json());

        AppServices services(m_home->environment());
        QCoro::waitFor(services.history().whenLoaded());

        QCOMPARE(services.history().records().size(), 1);
        QCOMPARE(services.history().records().first().beginning, record.text);
    }

    /// Work on other threads uses what the services own.
    void leavesNoWorkBehind()
    {
        // Hours of nothing, which take longer to decode than the services to end.
        const QString recording = m_home->path(u"long.m4a"_s);
        WavFileWriter(recording, sampleRate).finalize();
        QVERIFY(QFile::resize(recording, 1'900'000'000));
        QVERIFY(WavFileWriter::repair(recording, sampleRate));
        auto services = std::make_unique<AppServices>(m_home->environment(QStringLiteral(ORVANE_RESOURCES)));
        spawnPublished(services->transcriber().transcribe(
            {.audioPath = recording, .model = {.id = {}, .path = {}}, .language = u"ru"_s}));
        QTRY_VERIFY(longWorkPool().activeThreadCount() > 0);

        services.reset();

        QCOMPARE(longWorkPool().activeThreadCount(), 0);
        QCoreApplication::processEvents(); // what still waits for that work must not touch the services
    }

    void endsTextCorrectionWithItsEngine()
    {
        const FakeEngineHome engine(u"llama-server"_s);
        const QString completions = u"/v1/chat/completions"_s;
        engine.behave({.answers = {{u"/health"_s, {{.status = 200}}}, {completions, {FakeAnswer::never()}}}});
        auto services = std::make_unique<AppServices>(m_home->environment(engine.resources()));
        put(services->correctionModels().localPath(CorrectionModel::catalog().first()), {});
        services->correctionModels().refresh();
        const TaskResult result(services->corrector().correct(u"текст"_s, {}));
        QTRY_COMPARE(engine.requests(completions).size(), 1);

        services.reset();

        QTRY_VERIFY(result.isDone() && engine.allEnded());
        QVERIFY(result.isCancelled());
    }

    void reportsOnceSharingIsAllowed()
    {
        QTcpServer vendor;
        QVERIFY(vendor.listen(QHostAddress::LocalHost));
        AppServices::Environment environment = m_home->environment();
        environment.role = AppServices::Role::Application;
        environment.telemetry.endpoint = u"http://127.0.0.1:%1/"_s.arg(vendor.serverPort());
        AppServices services(environment);
        services.settings().setShareAnonymousStats(false);
        QTest::qWait(100);
        QVERIFY(!vendor.hasPendingConnections());
        services.settings().setShareAnonymousStats(true);
        QTRY_VERIFY(vendor.hasPendingConnections());
    }

private:
    std::unique_ptr<ServicesHome> m_home;
};

QTEST_GUILESS_MAIN(AppServicesTest)
#include "tst_appservices.moc"
