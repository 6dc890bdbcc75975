#include "tests/support/Compositor.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QStandardPaths>
#include <QThread>

#include <csignal>
#include <ranges>

#include <grp.h>
#include <sys/prctl.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace orvane::test {

namespace {

constexpr int patience = 30'000; // ms
constexpr uid_t nobody = 65534;

void require(bool condition, const char *what)
{
    if (!condition)
        qFatal("%s", what);
}

void put(const QString &path, const QByteArray &content)
{
    QFile file(path);
    require(file.open(QFile::WriteOnly) && file.write(content) == content.size(), "no temporary folder");
}

/// It dies with the test, however that ends.
void dieWithTest()
{
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
}

/// Refuses to run as root.
void becomeNobody()
{
    if (::geteuid() == 0 && (::setgroups(0, nullptr) != 0 || ::setgid(nobody) != 0 || ::setuid(nobody) != 0))
        ::_exit(1);
    dieWithTest();
}

void end(QProcess &process)
{
    process.terminate();
    if (!process.waitForFinished(patience))
        process.kill();
    process.waitForFinished();
}

} // namespace

bool Compositor::isInstalled(Kind kind)
{
    return !QStandardPaths::findExecutable(kind == Kind::Sway ? u"sway"_s : u"kwin_wayland"_s).isEmpty();
}

// Not in the test's own folder, where another user may not go and which may be too long for a socket's name.
Compositor::Compositor(Kind kind, const QProcessEnvironment &session)
    : m_kind(kind),
      m_folder(u"/tmp/orvane-session-XXXXXX"_s),
      m_environment(session)
{
    require(m_folder.isValid(), "no temporary folder");
    QDir(m_folder.path()).mkpath(u"config"_s);
    for (const char *name : {"DISPLAY", "XAUTHORITY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM", "GDK_BACKEND"})
        m_environment.remove(QString::fromLatin1(name));
    m_environment.insert(u"XDG_RUNTIME_DIR"_s, m_folder.path());
    m_environment.insert(u"XDG_SESSION_TYPE"_s, u"wayland"_s);
    m_environment.insert(u"XDG_CURRENT_DESKTOP"_s, kind == Kind::Sway ? u"sway"_s : u"KDE"_s);
    // Says where it is once it is there.
    put(file(u"announce"_s), "#!/bin/sh\n"
                             "xhost +si:localuser:root\n" // who may run the test
                             "env >\"$0.part\"\n"
                             "mv \"$0.part\" \"$0.done\"\n");
    QFile::setPermissions(file(u"announce"_s),
                          QFile::ReadOwner | QFile::ExeOwner | QFile::ReadOther | QFile::ExeOther);
    if (kind == Kind::Sway)
        startSway();
    else
        startKWin();

    const QString announcement = file(u"announce.done"_s);
    for (const QDeadlineTimer limit(patience); !QFile::exists(announcement); QThread::msleep(10))
        require(!limit.hasExpired() && m_process.state() == QProcess::Running &&
                    !m_process.waitForFinished(0),
                "the compositor does not come up");
    QFile announced(announcement);
    require(announced.open(QFile::ReadOnly), "the compositor does not say where it is");
    for (const QString &line : QString::fromUtf8(announced.readAll()).split(u'\n')) {
        const QString name = line.section(u'=', 0, 0);
        if (name == "DISPLAY"_L1 || name == "XAUTHORITY"_L1 || name == "SWAYSOCK"_L1)
            m_environment.insert(name, line.section(u'=', 1));
        else if (name == "WAYLAND_DISPLAY"_L1) // whatever folder a program has for its sockets
            m_environment.insert(name, file(line.section(u'=', 1)));
    }
    if (kind == Kind::Sway) {
        m_display = WaylandDisplay::open(m_environment.value(u"WAYLAND_DISPLAY"_s).toLocal8Bit());
        require(m_display != nullptr, "the compositor does not answer");
        setLayout("us");
    }
}

Compositor::~Compositor()
{
    m_keyboard.reset();
    m_display.reset();
    end();
    test::end(m_screen);
}

void Compositor::end()
{
    test::end(m_process);
}

void Compositor::startSway()
{
    if (::geteuid() == 0)
        require(::chown(m_folder.path().toLocal8Bit().constData(), nobody, nobody) == 0,
                "no folder for sway");
    put(file(u"sway"_s), "output HEADLESS-1 resolution 1280x800\n"
                         "default_border none\n"
                         "mode \"moving, windows\" bindsym m nop\n"
                         "exec " +
                             file(u"announce"_s).toLocal8Bit() + '\n');
    QFile::setPermissions(file(u"sway"_s), QFile::ReadOwner | QFile::ReadOther);
    m_environment.insert(u"WLR_BACKENDS"_s, u"headless"_s);
    m_environment.insert(u"WLR_LIBINPUT_NO_DEVICES"_s, u"1"_s);
    m_environment.insert(u"WLR_RENDERER"_s, u"pixman"_s);
    m_process.setChildProcessModifier(becomeNobody);
    start(u"sway"_s, {u"-c"_s, file(u"sway"_s)});
}

void Compositor::startKWin()
{
    m_screen.setChildProcessModifier(dieWithTest);
    m_screen.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_screen.start(u"Xvfb"_s, {u"-displayfd"_s, u"1"_s, u"-screen"_s, u"0"_s, u"1280x800x24"_s,
                               u"-nolisten"_s, u"tcp"_s, u"-noreset"_s});
    while (!m_screen.canReadLine())
        require(m_screen.waitForReadyRead(patience), "the X server does not come up");
    const QString screen = u":"_s + QString::fromLatin1(m_screen.readLine().trimmed());
    m_environment.insert(u"KWIN_COMPOSE"_s, u"Q"_s); // draws with the processor
    // Without a menu the newer one knows of no applications.
    QDir(m_folder.path()).mkpath(u"config/menus"_s);
    put(file(u"config/menus/applications.menu"_s),
        "<Menu><Name>Applications</Name><DefaultAppDirs/><Include><All/></Include></Menu>\n");
    m_process.setChildProcessModifier(dieWithTest);
    // A copy: the installed one may not be run where the capability that its file has cannot be gained.
    const QString copy = file(u"kwin_wayland"_s); // it insists on its name
    require(QFile::copy(QStandardPaths::findExecutable(u"kwin_wayland"_s), copy), "no KWin");
    start(copy,
          {u"--x11-display"_s, screen, u"--width"_s, u"1280"_s, u"--height"_s, u"800"_s, u"--no-lockscreen"_s,
           u"--xwayland"_s, u"--socket"_s, u"wayland-kwin"_s, file(u"announce"_s)});
    m_keyboardOfScreen = std::make_unique<XKeyboard>(screen);
}

void Compositor::start(const QString &program, const QStringList &arguments)
{
    QProcessEnvironment environment = m_environment;
    environment.insert(u"XDG_CONFIG_HOME"_s, file(u"config"_s));
    environment.insert(u"XDG_CACHE_HOME"_s, file(u"cache"_s)); // of the applications that there are
    environment.insert(u"QT_NO_XDG_DESKTOP_PORTAL"_s, u"1"_s);
    m_process.setProcessEnvironment(environment);
    m_process.setStandardOutputFile(QProcess::nullDevice());
    m_process.setStandardErrorFile(file(u"log"_s));
    m_process.start(program, arguments);
    require(m_process.waitForStarted(patience), "the compositor cannot be started");
}

void Compositor::tap(const QList<std::uint32_t> &keys)
{
    for (const std::uint32_t key : keys)
        press(key);
    for (const std::uint32_t key : keys | std::views::reverse)
        release(key);
}

void Compositor::setLayout(const char *layout, const char *variant)
{
    m_keyboard = VirtualKeyboard::make(*m_display, layout, variant);
    require(m_keyboard != nullptr && m_display->roundTrip(QDeadlineTimer(patience)),
            "the compositor gets no keyboard");
}

void Compositor::command(const QStringList &words) const
{
    QProcess swaymsg;
    swaymsg.setProcessEnvironment(m_environment);
    swaymsg.start(u"swaymsg"_s, words);
    require(swaymsg.waitForFinished(patience) && swaymsg.exitCode() == 0, "sway refuses a command");
}

void Compositor::set(std::uint32_t key, bool isDown)
{
    if (m_keyboardOfScreen) {
        constexpr std::uint32_t firstKeycode = 8; // of X11
        const auto code = XKeyboard::Key(key + firstKeycode);
        isDown ? m_keyboardOfScreen->press(code) : m_keyboardOfScreen->release(code);
    } else {
        m_keyboard->set(key, isDown);
        require(m_display->roundTrip(QDeadlineTimer(patience)), "the compositor is gone");
    }
}

} // namespace orvane::test
