#include "engine/ProcessControl.h"

#include <QFile>
#include <QProcess>

#include <csignal>
#include <cstdio>
#include <filesystem>
#include <sys/prctl.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace orvane::ProcessControl {

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

bool replaceFile(const QString &from, const QString &to)
{
    return std::rename(QFile::encodeName(from).constData(), QFile::encodeName(to).constData()) == 0;
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
