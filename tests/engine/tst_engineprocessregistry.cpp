#include "engine/EngineProcessRegistry.h"
#include "engine/PortReservation.h"
#include "tests/support/FakeEngineHome.h"
#include "tests/support/Files.h"
#include "tests/support/Rows.h"

#include <QProcess>
#include <QTcpServer>

using namespace Qt::StringLiterals;
using namespace orvane;
using namespace orvane::test;

class TestEngineProcessRegistry : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }

    void cleanup()
    {
        for (const std::unique_ptr<QProcess> &child : m_children) {
            child->kill();
            child->waitForFinished();
        }
        m_children.clear();
    }

    void endsThoseThatRun()
    {
        EngineProcessRegistry registry(pidFile());
        QProcess *ended = startSleep();
        QProcess *second = startSleep();
        QProcess *third = startSleep();
        registry.add(ended);
        QCOMPARE(content(), QByteArray::number(ended->processId()));
        ended->kill();
        ended->waitForFinished();
        registry.add(second);
        registry.add(third);
        const QByteArray both =
            QByteArray::number(second->processId()) + '\n' + QByteArray::number(third->processId());
        QCOMPARE(content(), both);

        registry.terminateAll();
        QCOMPARE(content(), "no file");
        for (QProcess *process : {second, third}) {
            QTRY_COMPARE(process->state(), QProcess::NotRunning);
            QCOMPARE(process->exitStatus(), QProcess::CrashExit);
        }
    }

    void killsOnlyEngines_data()
    {
        // %1 is an engine that a run left behind, %2 a program that got the identifier of one.
        const Rows<QString, QString> row("content", "name");
        const QString whisper = u"whisper-server"_s;
        row("both", u"%1\n%2"_s, whisper);
        row("other engine", u"%2\n%1"_s, u"llama-server"_s);
        row("garbage around", u"\n\nabc\n+99999999999\n-5\n0\n 12 34\n \t%1 \n%2\n"_s, whisper);
    }

    void killsOnlyEngines()
    {
        QFETCH(QString, content);
        QFETCH(const QString, name);
        QProcess *engine = startEngine(name);
        QProcess *reused = startSleep();
        content.replace(u"%1"_s, QString::number(engine->processId()));
        content.replace(u"%2"_s, QString::number(reused->processId()));
        put(pidFile(), content.toUtf8());

        EngineProcessRegistry(pidFile()).killStaleProcesses();
        QCOMPARE(this->content(), "no file");
        QTRY_COMPARE(engine->state(), QProcess::NotRunning);
        // A signal sent to them would have been delivered by the time that another child has started.
        startSleep();
        QVERIFY(FakeEngineHome::isRunning(reused->processId()));
    }

    void reservedPortIsFree()
    {
        const quint16 port = orvaneReserveFreePort(0);
        QVERIFY(port > 0);
        QTcpServer server;
        QVERIFY2(server.listen(QHostAddress::LocalHost, port), qPrintable(server.errorString()));
    }

private:
    [[nodiscard]] QString pidFile() const { return m_folder->filePath(u"new/Orvane/server-pids.txt"_s); }

    [[nodiscard]] QByteArray content() const
    {
        QFile file(pidFile());
        return file.open(QFile::ReadOnly) ? file.readAll() : QByteArray("no file");
    }

    /// A child that runs until it is ended, its executable under that name.
    QProcess *startEngine(const QString &name)
    {
        const QString folder = m_folder->filePath(u"engine-%1"_s.arg(m_children.size()));
        FakeEngineHome::install(folder, name, FakeEngineHome::Form::Copy);
        FakeEngineHome::behaveIn(folder, {.port = FakeEngineBehaviour::Port::StaysShut});
        return start(folder + u'/' + name, {});
    }

    QProcess *startSleep() { return start(u"sleep"_s, {u"1000"_s}); }

    QProcess *start(const QString &program, const QStringList &arguments)
    {
        QProcess *process = m_children.emplace_back(std::make_unique<QProcess>()).get();
        process->start(program, arguments);
        if (!process->waitForStarted())
            qFatal("%s", qPrintable(process->errorString()));
        return process;
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    std::vector<std::unique_ptr<QProcess>> m_children;
};

QTEST_GUILESS_MAIN(TestEngineProcessRegistry)
#include "tst_engineprocessregistry.moc"
