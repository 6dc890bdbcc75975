#include "engine/ProcessControl.h"

#include <QFile>
#include <QProcess>
#include <QSet>

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

bool listensOn(qint64 pid, quint16 port)
{
    const QSet<QByteArray> sockets = listeningSockets(port);
    std::error_code error;
    const std::filesystem::path folder = u"/proc/%1/fd"_s.arg(pid).toStdString();
    for (const auto &entry : std::filesystem::directory_iterator(folder, error)) {
        const std::string target = std::filesystem::read_symlink(entry.path(), error).string();
        if (sockets.contains(QByteArray::fromStdString(target)))
            return true;
    }
    return false;
}

std::chrono::milliseconds processorTime(qint64 pid)
{
    QFile file(u"/proc/%1/stat"_s.arg(pid));
    if (!file.open(QFile::ReadOnly))
        return {};
    const QByteArray stat = file.readAll();
    // After the name, which may hold blanks and brackets: state, …, user and system time in clock ticks.
    const QByteArrayList fields = stat.mid(stat.lastIndexOf(')') + 2).split(' ');
    const qint64 ticks = fields.value(11).toLongLong() + fields.value(12).toLongLong();
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
