#include "tests/support/SessionBus.h"

#include "tests/support/Files.h"

#include <QFile>

#include <csignal>
#include <sys/prctl.h>

using namespace Qt::StringLiterals;

namespace orvane::test {

namespace {

constexpr int patience = 30'000; // ms

} // namespace

SessionBus::SessionBus()
{
    start(u"--session"_s);
}

SessionBus::SessionBus(const QStringList &services)
{
    for (const QString &service : services)
        QFile::link(u"/usr/share/dbus-1/services/%1.service"_s.arg(service),
                    m_folder.filePath(service + u".service"_s));
    const QString path = m_folder.filePath(u"bus.conf"_s);
    put(path, u"<busconfig><type>session</type><listen>unix:tmpdir=/tmp</listen><servicedir>%1</servicedir>"
              "<policy context=\"default\"><allow send_destination=\"*\"/><allow receive_sender=\"*\"/>"
              "<allow own=\"*\"/></policy></busconfig>"_s.arg(m_folder.path())
                  .toUtf8());
    start(u"--config-file="_s + path);
}

void SessionBus::start(const QString &configuration)
{
    // What the bus starts keeps its sockets there.
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"XDG_RUNTIME_DIR"_s, m_folder.path());
    m_daemon.setProcessEnvironment(environment);
    m_daemon.setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGKILL); });
    m_daemon.start(u"dbus-daemon"_s, {configuration, u"--nofork"_s, u"--print-address"_s});
    while (!m_daemon.canReadLine()) {
        if (!m_daemon.waitForReadyRead(patience))
            qFatal("the session bus does not come up");
    }
    m_address = QString::fromUtf8(m_daemon.readLine().trimmed());
}

SessionBus::~SessionBus()
{
    m_daemon.kill();
    m_daemon.waitForFinished();
}

} // namespace orvane::test
