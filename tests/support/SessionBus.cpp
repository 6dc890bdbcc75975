#include "tests/support/SessionBus.h"

#include <csignal>
#include <sys/prctl.h>

using namespace Qt::StringLiterals;

namespace orvane::test {

namespace {

constexpr int patience = 30'000; // ms

} // namespace

SessionBus::SessionBus()
{
    // What the bus starts keeps its sockets there.
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"XDG_RUNTIME_DIR"_s, m_folder.path());
    m_daemon.setProcessEnvironment(environment);
    m_daemon.setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGKILL); });
    m_daemon.start(u"dbus-daemon"_s, {u"--session"_s, u"--nofork"_s, u"--print-address"_s});
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
