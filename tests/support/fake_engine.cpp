// A program that stands in for an engine: it is put under the engine's name into a folder of its own, takes
// the option
// --port, does what the file behaviour.json beside its name says and writes down in log.jsonl what it saw.

#include "tests/support/FakeEngineServer.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QJsonArray>
#include <QTimer>

#include <csignal>

using namespace Qt::StringLiterals;
using namespace orvane;

namespace {

bool isSigtermBlocked()
{
    sigset_t blocked;
    ::sigprocmask(SIG_SETMASK, nullptr, &blocked);
    return ::sigismember(&blocked, SIGTERM) == 1;
}

void logLaunch(const FakeEngineServer &server)
{
    const QStringList arguments = QCoreApplication::arguments();
    server.log(u"launch"_s, {{u"program"_s, arguments.first()},
                             {u"arguments"_s, QJsonArray::fromStringList(arguments.mid(1))},
                             {u"GGML_BACKEND_PATH"_s, qEnvironmentVariable("GGML_BACKEND_PATH")},
                             {u"isSigtermBlocked"_s, isSigtermBlocked()}});
}

void openPort(FakeEngineServer &server)
{
    const QStringList arguments = QCoreApplication::arguments();
    const quint16 port = arguments.value(arguments.indexOf(u"--port"_s) + 1).toUShort();
    if (!server.listen(port))
        QCoreApplication::exit(1);
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    // The name it was started by, not the program that a link leads to.
    FakeEngineServer server(QFileInfo(QString::fromLocal8Bit(argv[0])).absoluteDir());
    const FakeEngineBehaviour behaviour = server.behaviour();
    if (behaviour.ignoresSigterm)
        std::signal(SIGTERM, SIG_IGN);
    logLaunch(server);

    if (behaviour.exitAfterMs == 0)
        return 3;
    if (behaviour.exitAfterMs > 0)
        QTimer::singleShot(behaviour.exitAfterMs, [] { QCoreApplication::exit(3); });
    if (behaviour.port == FakeEngineBehaviour::Port::Opens)
        QTimer::singleShot(behaviour.portDelayMs, [&server] { openPort(server); });
    return QCoreApplication::exec();
}
