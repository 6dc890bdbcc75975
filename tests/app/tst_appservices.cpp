#include "app/services/AppServices.h"
#include "base/Async.h"
#include "tests/support/FakeEngineHome.h"
#include "tests/support/TaskResult.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
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

        const auto services = make();
        QCoro::waitFor(services->history().whenLoaded());

        QCOMPARE(services->history().records().size(), 1);
        QCOMPARE(services->history().records().first().beginning, record.text);
    }

    /// Work on other threads uses what the services own.
    void leavesNoWorkBehind()
    {
        const QString recording = write(u"a.m4a"_s, QByteArray(1 << 20, 'x'));
        auto services = make();
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
        auto services = make(engine.resources());
        const QString model = services->correctionModels().localPath(CorrectionModel::catalog().first());
        QVERIFY(QFile(model).open(QIODevice::WriteOnly));
        services->correctionModels().refresh();
        const TaskResult result(services->corrector().correct(u"текст"_s, {}));
        QTRY_COMPARE(engine.requests(completions).size(), 1);

        services.reset();

        QTRY_VERIFY(result.isDone() && engine.allEnded());
        QVERIFY(result.isCancelled());
    }

private:
    [[nodiscard]] std::unique_ptr<AppServices>
    make(const QString &resources = QStringLiteral(ORVANE_RESOURCES)) const
    {
        const StandardFolders folders{
            .applicationSupport = m_home->path(), .resources = resources, .temporary = m_home->path()};
        AppServices::Environment environment;
        environment.folders = folders;
        environment.defaultsFile = m_home->filePath(u"settings.json"_s);
        return std::make_unique<AppServices>(environment);
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
