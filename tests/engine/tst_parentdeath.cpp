#include "tests/support/FakeEngineHome.h"

#include <QProcess>
#include <QTest>

#include <csignal>

using namespace Qt::StringLiterals;
using namespace orvane;

class TestParentDeath : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void engineDiesWithItsProgram_data();
    void engineDiesWithItsProgram();
};

void TestParentDeath::engineDiesWithItsProgram_data()
{
    QTest::addColumn<bool>("ignoresSigterm");
    QTest::addColumn<int>("signal");
    QTest::newRow("killed") << false << SIGKILL;
    QTest::newRow("killed, with a deaf engine") << true << SIGKILL;
    QTest::newRow("ended by a signal that it does not handle") << false << SIGTERM;
}

void TestParentDeath::engineDiesWithItsProgram()
{
    QFETCH(const bool, ignoresSigterm);
    QFETCH(const int, signal);
    const FakeEngineHome home(u"whisper-server"_s);
    home.behave({.ignoresSigterm = ignoresSigterm});
    QProcess program;
    program.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    program.start(QStringLiteral(ORVANE_ENGINE_STARTER), {home.resources()});
    QTRY_VERIFY(program.canReadLine());
    QCOMPARE(program.readLine(), "ready\n");
    const qint64 engine = home.launches().first().pid;
    QVERIFY(FakeEngineHome::isRunning(engine));

    ::kill(pid_t(program.processId()), signal);
    QTRY_COMPARE(program.state(), QProcess::NotRunning);
    QTRY_VERIFY(!FakeEngineHome::isRunning(engine));
}

QTEST_GUILESS_MAIN(TestParentDeath)
#include "tst_parentdeath.moc"
