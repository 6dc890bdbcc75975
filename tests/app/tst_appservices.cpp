#include "app/services/AppServices.h"
#include "base/Async.h"
#include "tests/support/FakeEngineHome.h"
#include "tests/support/TaskResult.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTcpServer>
#include <QTemporaryDir>
#include <QTest>
#include <QThreadPool>

#include <QCoroCore>

using namespace Qt::StringLiterals;
using namespace orvane;

class AppServicesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_home = std::make_unique<QTemporaryDir>();
        QVERIFY(m_home->isValid());
    }

    void findsWhatTheEarlierProductLeft()
    {
        TranscriptRecord record;
        record.text = u"из прежней версии"_s;
        QDir(m_home->path()).mkpath(u"Vesk/History"_s);
        (void)write(u"Vesk/History/"_s + uuidText(record.id) + u".json"_s, record.json());

        AppServices services(environment());
        QCoro::waitFor(services.history().whenLoaded());

        QCOMPARE(services.history().records().size(), 1);
        QCOMPARE(services.history().records().first().beginning, record.text);
    }

    /// Work on other threads uses what the services own.
    void leavesNoWorkBehind()
    {
        const QString recording = write(u"a.m4a"_s, QByteArray(1 << 20, 'x'));
        auto services = std::make_unique<AppServices>(environment());
        spawnPublished(services->transcriber().transcribe(
            {.audioPath = recording, .model = {.id = {}, .path = {}}, .language = u"ru"_s}));
        QVERIFY(QThreadPool::globalInstance()->activeThreadCount() > 0);

        services.reset();

        QCOMPARE(QThreadPool::globalInstance()->activeThreadCount(), 0);
        QCoreApplication::processEvents(); // what still waits for that work must not touch the services
    }

    void endsTextCorrectionWithItsEngine()
    {
        const FakeEngineHome engine(u"llama-server"_s);
        const QString completions = u"/v1/chat/completions"_s;
        engine.behave({.answers = {{u"/health"_s, {{.status = 200}}}, {completions, {FakeAnswer::never()}}}});
        auto services = std::make_unique<AppServices>(environment(engine.resources()));
        const QString model = services->correctionModels().localPath(CorrectionModel::catalog().first());
        QVERIFY(QFile(model).open(QIODevice::WriteOnly));
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
        AppServices::Environment environment = this->environment();
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
    [[nodiscard]] AppServices::Environment
    environment(const QString &resources = QStringLiteral(ORVANE_RESOURCES)) const
    {
        AppServices::Environment environment;
        environment.folders = {
            .applicationSupport = m_home->path(), .resources = resources, .temporary = m_home->path()};
        environment.defaultsFile = m_home->filePath(u"settings.json"_s);
        return environment;
    }

    [[nodiscard]] QString write(const QString &name, const QByteArray &content) const
    {
        QFile file(m_home->filePath(name));
        if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
            qFatal("cannot write %s", qPrintable(file.fileName()));
        return file.fileName();
    }

    std::unique_ptr<QTemporaryDir> m_home;
};

QTEST_GUILESS_MAIN(AppServicesTest)
#include "tst_appservices.moc"
