#include "engine/EngineProcessRegistry.h"
#include "engine/EngineServer.h"
#include "tests/support/FakeEngineHome.h"
#include "tests/support/Files.h"
#include "tests/support/Rows.h"
#include "tests/support/TaskResult.h"

#include <QElapsedTimer>
#include <QScopeGuard>
#include <QTcpServer>
#include <QTcpSocket>

#include <csignal>
#include <sys/ptrace.h>
#include <sys/wait.h>

using namespace Qt::StringLiterals;
using namespace orvane;
using namespace orvane::test;
using namespace std::chrono_literals;
using Port = FakeEngineBehaviour::Port;

namespace {

/// The least that makes an engine out of the supervision.
class PlainEngine : public EngineServer
{
public:
    PlainEngine(const SearchPath &search, EngineProcessRegistry &registry,
                std::chrono::seconds startTimeout = 120s)
        : EngineServer({.executable = u"fake-server"_s,
                        .serverName = "fake",
                        .fallbackPort = 48700,
                        .startTimeout = startTimeout,
                        .startErrorPrefix = u"not started: "_s,
                        .requestErrorPrefix = u"failed: "_s,
                        .notFoundText = u"not installed"_s},
                       search, registry)
    {}

    using EngineServer::beginRequest;
    using EngineServer::InFlight;

    QCoro::Task<HttpAnswer> ask(std::stop_token stop)
    {
        return answerTo(std::unique_ptr<QNetworkReply>(network().get(requestTo(u"/work"_s))), stop);
    }

    void setBeforeLaunch(std::function<void(quint16)> hook) { m_beforeLaunch = std::move(hook); }

protected:
    [[nodiscard]] QStringList arguments(const QString &, const QString &modelPath) const override
    {
        if (m_beforeLaunch)
            m_beforeLaunch(port());
        return {u"-m"_s, modelPath, u"--port"_s, QString::number(port())};
    }
    [[nodiscard]] QNetworkRequest probeRequest() const override { return requestTo(u"/"_s); }
    [[nodiscard]] bool isReady(int status) const override { return status == 200; }

private:
    std::function<void(quint16)> m_beforeLaunch;
};

const QMap<QString, QList<FakeAnswer>> ready = {{u"/"_s, {{.status = 200}}}};

void makeFile(const QString &path, const QByteArray &content, bool isExecutable)
{
    put(path, content);
    QFile::setPermissions(path, isExecutable ? QFile::ReadOwner | QFile::ExeOwner : QFile::ReadOwner);
}

} // namespace

class TestEngineServer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_home = std::make_unique<FakeEngineHome>(u"fake-server"_s);
        m_home->behave({.answers = ready});
        m_registry = std::make_unique<EngineProcessRegistry>(QString());
        startEngine();
    }

    void cleanup()
    {
        m_engine.reset();
        QTRY_VERIFY(m_home->allEnded());
        QCoreApplication::processEvents(); // what waited for that goes on
    }

    void searchOrder_data()
    {
        // What lies in the program's resources and in two further folders: an executable (x), a file that is
        // not executable (f), a folder of that name (d) or nothing (-).
        const Rows<QString, int> row("found", "taken");
        row("own engine first", u"xxx"_s, 0);
        row("then in order", u"-xx"_s, 1);
        row("what is not executable is passed over", u"dfx"_s, 2);
        row("nothing usable", u"fd-"_s, -1);
    }

    void searchOrder()
    {
        QFETCH(const QString, found);
        QFETCH(const int, taken);
        const QTemporaryDir root;
        const QStringList folders = {root.filePath(u"engine"_s), root.filePath(u"b"_s),
                                     root.filePath(u"c"_s)};
        for (int i = 0; i < folders.size(); ++i) {
            const QString path = folders[i] + u"/fake-server"_s;
            QVERIFY(QDir().mkpath(found[i] == u'd' ? path : folders[i]));
            if (found[i] == u'x' || found[i] == u'f')
                makeFile(path, "#!/bin/sh\n", found[i] == u'x');
        }
        const PlainEngine engine({.resources = root.path(), .folders = folders.mid(1)}, *m_registry);
        QCOMPARE(engine.findBinary(), taken < 0 ? QString() : folders[taken] + u"/fake-server"_s);
    }

    void childIsNotBornDeafToSignals()
    {
        // As in a program that takes its signals from a file descriptor.
        sigset_t blocked;
        sigset_t before;
        ::sigemptyset(&blocked);
        ::sigaddset(&blocked, SIGTERM);
        ::sigprocmask(SIG_BLOCK, &blocked, &before);
        const auto load = finished(m_engine->load(model()));
        ::sigprocmask(SIG_SETMASK, &before, nullptr);
        QVERIFY(!m_home->launches().first().isSigtermBlocked);
    }

    void cannotBeLaunched()
    {
        QVERIFY(QFile::remove(m_home->executable()));
        makeFile(m_home->executable(), "#!/missing\n", true);
        const auto load = finished(m_engine->load(model()));
        QCOMPARE(load.error(), u"not started: файл движка повреждён или не подходит этой системе"_s);
        QVERIFY(!m_engine->isRunning());

        // The next load tries again from scratch.
        QVERIFY(QFile::remove(m_home->executable()));
        FakeEngineHome::install(m_home->engineFolder(), u"fake-server"_s);
        QVERIFY(finished(m_engine->load(model())).succeeded());
    }

    void neverAnswers()
    {
        startEngine(1s);
        m_home->behave({.port = Port::StaysShut});
        const auto load = finished(m_engine->load(model()));
        QCOMPARE(load.error(), u"not started: сервер не ответил за 1 секунд"_s);
        QVERIFY(!m_engine->isRunning());
    }

    void staysLoaded()
    {
        for (int i = 0; i < 2; ++i) {
            QVERIFY(finished(m_engine->load(model())).succeeded());
        }
        QCOMPARE(m_home->launches().size(), 1);
        QVERIFY(finished(m_engine->load(model(u"b"_s))).succeeded());
        QCOMPARE(m_home->launches().size(), 2);
        QCOMPARE(m_home->launches().last().arguments.value(1), model(u"b"_s));
        QVERIFY(!FakeEngineHome::isRunning(m_home->launches().first().pid));

        m_engine->requestRestart();
        QVERIFY(m_engine->isRunning());
        for (int i = 0; i < 2; ++i) {
            QVERIFY(finished(m_engine->load(model(u"b"_s))).succeeded());
            QCOMPARE(m_home->launches().size(), 3);
        }
    }

    void cancelledLaunchDoesNotCancelTheNextCaller()
    {
        m_home->behave({.port = Port::StaysShut});
        std::stop_source stop;
        const TaskResult first(m_engine->load(model(), stop.get_token()));
        const TaskResult second(m_engine->load(model()));
        QTRY_COMPARE(m_home->launches().size(), 1);
        m_home->behave({.answers = ready});
        stop.request_stop();
        QTRY_VERIFY(first.isDone() && second.isDone());
        QVERIFY(first.isCancelled());
        QVERIFY2(second.succeeded(), qPrintable(second.error()));
    }

    void everyCallerGetsItsModel()
    {
        // Each begins its request when its load returns, with nothing awaited between: nobody else's load may
        // come between the two.
        static const auto use = [](PlainEngine *engine, QString path) -> QCoro::Task<bool> {
            co_await engine->load(path);
            const PlainEngine::InFlight request = engine->beginRequest();
            co_return engine->isRunning();
        };
        std::vector<TaskResult<bool>> users;
        for (const QString &name : {u"a"_s, u"b"_s, u"a"_s, u"c"_s})
            users.emplace_back(use(m_engine.get(), model(name)));
        for (const TaskResult<bool> &user : users) {
            QTRY_VERIFY_WITH_TIMEOUT(user.isDone(), 20'000);
            QVERIFY2(user.succeeded(), qPrintable(user.error()));
            QVERIFY(user.value());
        }
    }

    void modelSwitchWaitsForRequest()
    {
        m_home->behave({.answers = {{u"/"_s, {{.status = 200}}}, {u"/work"_s, {{.status = 200}}}}});
        QVERIFY(finished(m_engine->load(model())).succeeded());
        PlainEngine::InFlight request = m_engine->beginRequest();
        const TaskResult second(m_engine->load(model(u"b"_s)));
        for (int i = 0; i < 5; ++i) // it goes on answering
            QVERIFY(finished(m_engine->ask({})).succeeded());
        QCOMPARE(m_home->launches().size(), 1);
        request.reset();
        QTRY_VERIFY(second.succeeded());
        QCOMPARE(m_home->launches().size(), 2);
    }

    void diedMeanwhile()
    {
        QVERIFY(finished(m_engine->load(model())).succeeded());
        ::kill(pid_t(lastPid()), SIGKILL);
        QTRY_VERIFY(!m_engine->isRunning());
        QVERIFY(finished(m_engine->load(model())).succeeded());
        QVERIFY(m_engine->isRunning());
    }

    void interruptedWhileStarting_data()
    {
        const Rows<Interruption, FakeAnswer> row("interruption", "probe");
        row("cancelled by all who wait", Interruption::Cancelled, {.status = 503});
        row("stopped before it answers", Interruption::Stopped, {.status = 503});
        row("stopped while it answers", Interruption::Stopped, {.status = 200, .delayMs = 500});
        row("destroyed", Interruption::Destroyed, FakeAnswer::never());
    }

    void interruptedWhileStarting()
    {
        QFETCH(const Interruption, interruption);
        QFETCH(const FakeAnswer, probe);
        m_home->behave(
            {.ignoresSigterm = interruption == Interruption::Destroyed, .answers = {{u"/"_s, {probe}}}});
        std::stop_source stop;
        const TaskResult load(m_engine->load(model(), stop.get_token()));
        const TaskResult waiting(m_engine->load(model(), stop.get_token()));
        QTRY_VERIFY(!m_home->requests(u"/"_s).isEmpty());
        if (interruption == Interruption::Cancelled) {
            stop.request_stop();
        } else if (interruption == Interruption::Stopped) {
            QVERIFY(finished(m_engine->stopAndWait()).isDone());
            QVERIFY(!FakeEngineHome::isRunning(lastPid()));
        } else {
            m_engine.reset();
        }
        QTRY_VERIFY(load.isDone() && waiting.isDone());
        QVERIFY(load.isCancelled() && waiting.isCancelled());
        QTRY_VERIFY(!FakeEngineHome::isRunning(lastPid()));
        QCOMPARE(m_home->launches().size(), 1);
    }

    void anotherProgramOnThePort()
    {
        m_home->behave({.port = Port::StaysShut});
        // Takes the port between its reservation and the launch.
        QTcpServer other;
        connect(&other, &QTcpServer::newConnection, this, [&other] {
            QTcpSocket *client = other.nextPendingConnection();
            connect(client, &QTcpSocket::readyRead, client, [client] {
                client->write("HTTP/1.1 200 OK\r\nContent-Length: 0\r\nConnection: close\r\n\r\n");
                client->disconnectFromHost();
            });
        });
        m_engine->setBeforeLaunch(
            [&other](quint16 port) { QVERIFY(other.listen(QHostAddress::LocalHost, port)); });
        const auto load = finished(m_engine->load(model()));
        QCOMPARE(load.error(), u"not started: на его порту отвечает другая программа"_s);
    }

    void serverBehindAScript()
    {
        QVERIFY(QFile::rename(m_home->executable(), m_home->executable() + u".real"_s));
        makeFile(m_home->executable(), "#!/bin/sh\n\"$0.real\" \"$@\"\nexit $?\n", true);
        const auto load = finished(m_engine->load(model()));
        QVERIFY2(load.succeeded(), qPrintable(load.error()));
        m_engine->stop();
        QTRY_VERIFY(!FakeEngineHome::isRunning(lastPid()));
    }

    void stopping_data()
    {
        const Rows<bool, bool> row("ignoresSigterm", "waits");
        row("ends when asked", false, true);
        row("must be killed", true, true);
        row("must be killed, nobody waits", true, false);
    }

    void stopping()
    {
        QFETCH(const bool, ignoresSigterm);
        QFETCH(const bool, waits);
        m_home->behave({.ignoresSigterm = ignoresSigterm, .answers = ready});
        QVERIFY(finished(m_engine->load(model())).succeeded());

        QElapsedTimer timer;
        timer.start();
        if (waits) {
            const TaskResult stopped(m_engine->stopAndWait());
            QVERIFY(!m_engine->isRunning());
            QTRY_VERIFY(stopped.isDone());
            QVERIFY(!FakeEngineHome::isRunning(lastPid()));
        } else {
            m_engine->stop();
            QVERIFY(!m_engine->isRunning());
            QTRY_VERIFY(!FakeEngineHome::isRunning(lastPid()));
        }
        QCOMPARE(timer.elapsed() > 1500, ignoresSigterm); // the grace of 2 s, on a coarse timer
    }

    /// As in the kernel, where a process stays that waits for a disk that is gone.
    void stuckWhenKilled()
    {
        const TaskResult load(m_engine->load(model()));
        QTRY_VERIFY(load.succeeded());
        const auto pid = pid_t(lastPid());
        if (::ptrace(PTRACE_SEIZE, pid, nullptr, PTRACE_O_TRACEEXIT) != 0)
            QSKIP("this system lets no program hold another");
        const auto release = qScopeGuard([pid] {
            ::waitpid(pid, nullptr, __WALL);
            ::ptrace(PTRACE_DETACH, pid, nullptr, nullptr);
        });
        const TaskResult next(m_engine->load(model(u"b"_s)));
        QTRY_VERIFY_WITH_TIMEOUT(next.isDone(), 20'000);
        QVERIFY2(next.succeeded(), qPrintable(next.error()));
        QVERIFY(FakeEngineHome::isRunning(pid));
    }

    void abandonedRequest_data()
    {
        const Rows<FakeAnswer, int> row("answer", "launches");
        row("stops computing", FakeAnswer::never(), 1);
        row("goes on computing", FakeAnswer{.ending = FakeAnswer::Ending::Computes}, 2);
    }

    void abandonedRequest()
    {
        QFETCH(const FakeAnswer, answer);
        m_home->behave({.answers = {{u"/"_s, {{.status = 200}}}, {u"/work"_s, {answer}}}});
        const auto load = finished(m_engine->load(model()));
        QVERIFY(load.succeeded());
        std::stop_source stop;
        const TaskResult request(m_engine->ask(stop.get_token()));
        QTRY_COMPARE(m_home->requests(u"/work"_s).size(), 1);
        stop.request_stop();
        QTRY_VERIFY(request.isCancelled());
        QVERIFY(m_engine->isRunning());

        QTest::qWait(3000); // the 2 s that it is given, and a look at it
        QVERIFY(finished(m_engine->load(model())).succeeded());
        QTEST(int(m_home->launches().size()), "launches");
    }

private:
    enum class Interruption { Cancelled, Stopped, Destroyed };

    void startEngine(std::chrono::seconds startTimeout = 120s)
    {
        m_engine = std::make_unique<PlainEngine>(
            EngineServer::SearchPath{.resources = m_home->resources(), .folders = {}}, *m_registry,
            startTimeout);
    }

    [[nodiscard]] QString model(const QString &name = u"a"_s) const
    {
        return m_home->resources() + u'/' + name;
    }
    [[nodiscard]] qint64 lastPid() const { return m_home->launches().last().pid; }

    std::unique_ptr<FakeEngineHome> m_home;
    std::unique_ptr<EngineProcessRegistry> m_registry;
    std::unique_ptr<PlainEngine> m_engine;
};

QTEST_GUILESS_MAIN(TestEngineServer)
#include "tst_engineserver.moc"
