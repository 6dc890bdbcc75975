#include "engine/EngineProcessRegistry.h"
#include "engine/PortReservation.h"
#include "tests/support/FakeEngineHome.h"

#include <QProcess>
#include <QScopeGuard>
#include <QStandardPaths>
#include <QTcpServer>
#include <QTest>

#include <sys/resource.h>

using namespace Qt::StringLiterals;
using namespace orvane;

class TestEngineProcessRegistry : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }
    void cleanup();

    void fileOfRunningProcesses();
    void terminateAll();
    void killsOnlyEngines_data();
    void killsOnlyEngines();
    void killsReplacedEngine();
    void emptyPathTouchesNothing();
    void fileThatCannotBeWritten();

    void reservedPortIsFree();
    void noSocketGivesFallback();

private:
    [[nodiscard]] QString pidFile() const { return m_folder->filePath(u"new/Orvane/server-pids.txt"_s); }
    [[nodiscard]] QByteArray content() const;
    void writePIDs(const QByteArray &content) const;
    /// A child that runs until it is ended, its executable under that name.
    QProcess *startEngine(const QString &name = u"whisper-server"_s);
    QProcess *startSleep();

    std::unique_ptr<QTemporaryDir> m_folder;
    std::vector<std::unique_ptr<QProcess>> m_children;
};

void TestEngineProcessRegistry::cleanup()
{
    for (const std::unique_ptr<QProcess> &child : m_children) {
        child->kill();
        child->waitForFinished();
    }
    m_children.clear();
}

QByteArray TestEngineProcessRegistry::content() const
{
    QFile file(pidFile());
    return file.open(QFile::ReadOnly) ? file.readAll() : QByteArray("no file");
}

void TestEngineProcessRegistry::writePIDs(const QByteArray &content) const
{
    QVERIFY(QDir().mkpath(QFileInfo(pidFile()).path()));
    QFile file(pidFile());
    QVERIFY(file.open(QFile::WriteOnly));
    file.write(content);
}

QProcess *TestEngineProcessRegistry::startEngine(const QString &name)
{
    const QString folder = m_folder->filePath(u"engine-%1"_s.arg(m_children.size()));
    FakeEngineHome::install(folder, name, FakeEngineHome::Form::Copy);
    FakeEngineHome::behaveIn(folder, {.port = FakeEngineBehaviour::Port::StaysShut});
    m_children.push_back(std::make_unique<QProcess>());
    QProcess *process = m_children.back().get();
    process->start(folder + u'/' + name, QStringList());
    if (!process->waitForStarted())
        qFatal("%s", qPrintable(process->errorString()));
    return process;
}

QProcess *TestEngineProcessRegistry::startSleep()
{
    m_children.push_back(std::make_unique<QProcess>());
    QProcess *process = m_children.back().get();
    process->start(u"sleep"_s, {u"1000"_s});
    if (!process->waitForStarted())
        qFatal("%s", qPrintable(process->errorString()));
    return process;
}

void TestEngineProcessRegistry::fileOfRunningProcesses()
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

    // One that is gone altogether, as after its engine was.
    m_children.erase(m_children.begin() + 1);
    QProcess *last = startSleep();
    registry.add(last);
    QCOMPARE(content(),
             QByteArray::number(third->processId()) + '\n' + QByteArray::number(last->processId()));
    QCOMPARE(QDir(QFileInfo(pidFile()).path()).entryList(QDir::Files).size(), 1);
}

void TestEngineProcessRegistry::terminateAll()
{
    EngineProcessRegistry registry(pidFile());
    QProcess *first = startSleep();
    QProcess *second = startSleep();
    registry.add(first);
    registry.add(second);
    registry.terminateAll();
    QCOMPARE(content(), "no file");
    for (QProcess *process : {first, second}) {
        QTRY_COMPARE(process->state(), QProcess::NotRunning);
        QCOMPARE(process->exitStatus(), QProcess::CrashExit);
    }
    QProcess *third = startSleep();
    registry.add(third);
    QCOMPARE(content(), QByteArray::number(third->processId()));
}

void TestEngineProcessRegistry::killsOnlyEngines_data()
{
    // %1 is an engine that a run left behind, %2 a program that got the identifier of one.
    QTest::addColumn<QString>("content");
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("isEnded");
    const QString whisper = u"whisper-server"_s;
    QTest::newRow("both") << u"%1\n%2"_s << whisper << true;
    QTest::newRow("other engine") << u"%2\n%1"_s << u"llama-server"_s << true;
    QTest::newRow("garbage around") << u"\n\nabc\n+99999999999\n-5\n0\n 12 34\n \t%1 \n%2\n"_s << whisper
                                    << true;
    QTest::newRow("overflow that wraps to it") << u"%3"_s << whisper << false;
    QTest::newRow("every other separator") << u"x\vy\f%2\u0085%1\u2028z\u2029"_s << whisper << true;
}

void TestEngineProcessRegistry::killsOnlyEngines()
{
    QFETCH(QString, content);
    QFETCH(const QString, name);
    QFETCH(const bool, isEnded);
    QProcess *engine = startEngine(name);
    QProcess *reused = startSleep();
    content.replace(u"%1"_s, QString::number(engine->processId()));
    content.replace(u"%2"_s, QString::number(reused->processId()));
    content.replace(u"%3"_s, QString::number(engine->processId() + (1LL << 32)));
    writePIDs(content.toUtf8());

    EngineProcessRegistry(pidFile()).killStaleProcesses();
    QCOMPARE(this->content(), "no file");
    if (isEnded)
        QTRY_COMPARE(engine->state(), QProcess::NotRunning);
    // A signal sent to them would have been delivered by the time that another child has started.
    startSleep();
    QVERIFY(isEnded || FakeEngineHome::isRunning(engine->processId()));
    QVERIFY(FakeEngineHome::isRunning(reused->processId()));
}

void TestEngineProcessRegistry::killsReplacedEngine()
{
    QProcess *engine = startEngine();
    QVERIFY(QFile::remove(engine->program())); // as an update of it does
    writePIDs(QByteArray::number(engine->processId()));
    EngineProcessRegistry(pidFile()).killStaleProcesses();
    QTRY_COMPARE(engine->state(), QProcess::NotRunning);
}

void TestEngineProcessRegistry::emptyPathTouchesNothing()
{
    const QString before = QDir::currentPath();
    QVERIFY(QDir::setCurrent(m_folder->path()));
    const auto restore = qScopeGuard([&before] { QDir::setCurrent(before); });
    EngineProcessRegistry registry((QString()));
    QProcess *process = startSleep();
    registry.killStaleProcesses();
    registry.add(process);
    QVERIFY(QDir(m_folder->path()).isEmpty());
    registry.terminateAll();
    QTRY_COMPARE(process->state(), QProcess::NotRunning);
    QVERIFY(QDir(m_folder->path()).isEmpty());
}

void TestEngineProcessRegistry::fileThatCannotBeWritten()
{
    EngineProcessRegistry registry(u"/proc/no/such/server-pids.txt"_s);
    QProcess *process = startSleep();
    registry.add(process);
    registry.terminateAll();
    QTRY_COMPARE(process->state(), QProcess::NotRunning);
}

void TestEngineProcessRegistry::reservedPortIsFree()
{
    const quint16 port = orvaneReserveFreePort(0);
    QVERIFY(port > 0);
    QTcpServer server;
    QVERIFY2(server.listen(QHostAddress::LocalHost, port), qPrintable(server.errorString()));
}

void TestEngineProcessRegistry::noSocketGivesFallback()
{
    rlimit before;
    ::getrlimit(RLIMIT_NOFILE, &before);
    const rlimit none = {.rlim_cur = 0, .rlim_max = before.rlim_max};
    ::setrlimit(RLIMIT_NOFILE, &none);
    const quint16 port = orvaneReserveFreePort(48700);
    ::setrlimit(RLIMIT_NOFILE, &before);
    QCOMPARE(port, 48700);
}

QTEST_GUILESS_MAIN(TestEngineProcessRegistry)
#include "tst_engineprocessregistry.moc"
