#include "tools/benchmarks/outside/ProcessCosts.h"

#include <QDir>
#include <QFile>

#include <ctime>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

/// The number behind the key in a file of lines such as "VmRSS:   1234 kB".
qint64 numberIn(const QString &path, QByteArrayView key)
{
    QFile file(path);
    if (!file.open(QFile::ReadOnly))
        return 0; // of a thread that has ended
    const QByteArray content = file.readAll();
    const qsizetype begin = content.indexOf('\n' + key.toByteArray() + ':') + key.size() + 2;
    return content.mid(begin, content.indexOf('\n', begin) - begin)
        .simplified()
        .split(' ')
        .value(0)
        .toLongLong();
}

double processorSecondsOf(pid_t pid)
{
    clockid_t clock = 0;
    timespec time{};
    if (clock_getcpuclockid(pid, &clock) != 0 || clock_gettime(clock, &time) != 0)
        qFatal("the process has ended");
    return double(time.tv_sec) + double(time.tv_nsec) / 1e9;
}

} // namespace

ProcessCosts ProcessCosts::of(qint64 pid)
{
    const QDir process(u"/proc/%1"_s.arg(pid));
    const QString status = process.filePath(u"status"_s);
    ProcessCosts costs{.processorSeconds = processorSecondsOf(pid_t(pid)),
                       .residentMiB = double(numberIn(status, "VmRSS")) / 1024,
                       .privateMiB =
                           double(numberIn(process.filePath(u"smaps_rollup"_s), "Private_Dirty")) / 1024};
    const QDir threads(process.filePath(u"task"_s));
    for (const QString &thread : threads.entryList(QDir::Dirs | QDir::NoDotAndDotDot))
        costs.wakeUps += numberIn(threads.filePath(thread + u"/status"_s), "voluntary_ctxt_switches");
    return costs;
}

} // namespace orvane
