#include "tests/support/XDisplay.h"

#include "desktop/Xcb.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QThread>

#include <csignal>
#include <sys/prctl.h>

using namespace Qt::StringLiterals;

namespace orvane::test {

namespace {

constexpr int patience = 30'000; // ms
constexpr auto marker = "ORVANE_TEST_HAS_DISPLAY";

void require(bool condition, const char *what)
{
    if (!condition)
        qFatal("%s", what);
}

/// It dies with the test, however that ends.
void start(QProcess &process, const QString &program, const QStringList &arguments)
{
    process.setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGKILL); });
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.start(program, arguments);
    require(process.waitForStarted(), qPrintable(program + u" cannot be started"_s));
}

void end(QProcess &process)
{
    process.terminate();
    if (!process.waitForFinished())
        process.kill();
    process.waitForFinished();
}

/// A window manager announces itself once it manages the windows.
bool isManaged(const QString &display)
{
    const XcbConnection connection = XcbConnection::open(display.toLatin1().constData());
    if (!connection)
        return false;
    constexpr QByteArrayView property("_NET_SUPPORTING_WM_CHECK");
    const XcbOwned<xcb_intern_atom_reply_t> atom(xcb_intern_atom_reply(
        connection.get(), xcb_intern_atom(connection.get(), 1, property.size(), property.data()), nullptr));
    if (!atom || atom->atom == XCB_NONE)
        return false;
    const XcbOwned<xcb_get_property_reply_t> value(xcb_get_property_reply(
        connection.get(),
        xcb_get_property(connection.get(), 0, connection.root(), atom->atom, XCB_ATOM_WINDOW, 0, 1),
        nullptr));
    return value && value->type == XCB_ATOM_WINDOW;
}

} // namespace

XDisplay::XDisplay()
{
    start(m_server, u"Xvfb"_s,
          {u"-displayfd"_s, u"1"_s, u"-screen"_s, u"0"_s, u"1280x800x24"_s, u"-nolisten"_s, u"tcp"_s,
           u"-noreset"_s});
    while (!m_server.canReadLine())
        require(m_server.waitForReadyRead(patience), "the X server does not come up");
    m_name = u":"_s + QString::fromLatin1(m_server.readLine().trimmed());

    m_windowManager.setProcessEnvironment(environment());
    start(m_windowManager, u"openbox"_s, {u"--sm-disable"_s});
    for (const QDeadlineTimer end(patience); !isManaged(m_name);) {
        require(!end.hasExpired(), "the window manager does not come up");
        QThread::msleep(20);
    }
}

XDisplay::~XDisplay()
{
    end(m_windowManager);
    end(m_server);
}

QProcessEnvironment XDisplay::environment() const
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"DISPLAY"_s, m_name);
    environment.insert(u"QT_QPA_PLATFORM"_s, u"xcb"_s);
    environment.insert(u"GDK_BACKEND"_s, u"x11"_s);
    environment.remove(u"WAYLAND_DISPLAY"_s);
    return environment;
}

std::optional<int> XDisplay::runThisProgram(int argc, char **argv)
{
    if (qEnvironmentVariableIsSet(marker))
        return std::nullopt;
    const QCoreApplication application(argc, argv);
    const XDisplay display;
    QProcessEnvironment environment = display.environment();
    environment.insert(QString::fromLatin1(marker), u"1"_s);
    QProcess program;
    program.setProcessEnvironment(environment);
    program.setProcessChannelMode(QProcess::ForwardedChannels);
    program.setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGKILL); });
    program.start(QCoreApplication::applicationFilePath(), QCoreApplication::arguments().mid(1));
    program.waitForFinished(-1);
    return program.exitStatus() == QProcess::NormalExit ? program.exitCode() : 1;
}

} // namespace orvane::test
