#include "engine/ProcessControl.h"

#include <QDir>
#include <QFile>
#include <QMultiHash>
#include <QProcess>
#include <QSet>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <sys/prctl.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace orvane::ProcessControl {

namespace {

/// As the links in a process's "fd" folder name them.
QSet<QByteArray> listeningSockets(quint16 port)
{
    const QByteArray place = ':' + QByteArray::number(port, 16).rightJustified(4, '0').toUpper();
    const QByteArray listening = "0A";
    QSet<QByteArray> sockets;
    QFile table(u"/proc/net/tcp"_s);
    if (!table.open(QFile::ReadOnly))
        return sockets;
    const QByteArrayList lines = table.readAll().split('\n');
    for (const QByteArray &line : lines) {
        // Number, local address, remote address, state, …; the tenth is the inode.
        const QByteArrayList fields = line.simplified().split(' ');
        if (fields.value(1).endsWith(place) && fields.value(3) == listening)
            sockets.insert("socket:[" + fields.value(9) + ']');
    }
    return sockets;
}

/// What /proc says of a process behind its name, which may hold blanks and brackets: state, parent, …
QByteArrayList statOf(qint64 pid)
{
    QFile file(u"/proc/%1/stat"_s.arg(pid));
    if (!file.open(QFile::ReadOnly))
        return {};
    const QByteArray stat = file.readAll();
    return stat.mid(stat.lastIndexOf(')') + 2).split(' ');
}

/// The process and all that descend from it.
QList<qint64> familyOf(qint64 pid)
{
    QMultiHash<qint64, qint64> children;
    for (const QString &name : QDir(u"/proc"_s).entryList(QDir::Dirs)) {
        if (const qint64 process = name.toLongLong(); process > 0)
            children.insert(statOf(process).value(1).toLongLong(), process);
    }
    QList<qint64> family = {pid};
    for (qsizetype i = 0; i < family.size(); ++i)
        family += children.values(family.at(i));
    return family;
}

// The group is there a moment after the process.
void signalFamily(qint64 pid, int signal)
{
    if (pid > 0 && ::kill(static_cast<pid_t>(-pid), signal) != 0)
        ::kill(static_cast<pid_t>(pid), signal);
}

bool holdsOneOf(const QSet<QByteArray> &sockets, qint64 pid)
{
    std::error_code error;
    const std::filesystem::path folder = u"/proc/%1/fd"_s.arg(pid).toStdString();
    for (const auto &entry : std::filesystem::directory_iterator(folder, error)) {
        const std::string target = std::filesystem::read_symlink(entry.path(), error).string();
        if (sockets.contains(QByteArray::fromStdString(target)))
            return true;
    }
    return false;
}

} // namespace

QString executablePath(qint32 pid)
{
    const std::filesystem::path link = u"/proc/%1/exe"_s.arg(pid).toStdString();
    std::error_code error;
    QString path = QString::fromStdString(std::filesystem::read_symlink(link, error).string());
    // What the kernel appends once the file was replaced, as an update of the engine does.
    if (path.endsWith(u" (deleted)"))
        path.chop(qsizetype(std::size(u" (deleted)")) - 1);
    return path;
}

void terminate(qint32 pid)
{
    ::kill(pid, SIGTERM);
}

void terminateFamily(qint64 pid)
{
    signalFamily(pid, SIGTERM);
}

void killFamily(qint64 pid)
{
    signalFamily(pid, SIGKILL);
}

bool listensOn(qint64 pid, quint16 port)
{
    const QSet<QByteArray> sockets = listeningSockets(port);
    return std::ranges::any_of(familyOf(pid),
                               [&sockets](qint64 process) { return holdsOneOf(sockets, process); });
}

std::chrono::milliseconds processorTime(qint64 pid)
{
    const QByteArrayList stat = statOf(pid);
    const qint64 ticks = stat.value(11).toLongLong() + stat.value(12).toLongLong(); // user and system
    return std::chrono::milliseconds(ticks * 1000 / ::sysconf(_SC_CLK_TCK));
}

void bindToThisProgram(QProcess &process)
{
    process.setChildProcessModifier([parent = ::getpid()] {
        // The signal is tied to the thread that forks: engines are started on the main thread.
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (::getppid() != parent)
            ::_exit(1);
        ::setpgid(0, 0);
        sigset_t none;
        ::sigemptyset(&none);
        ::sigprocmask(SIG_SETMASK, &none, nullptr);
    });
}

} // namespace orvane::ProcessControl
