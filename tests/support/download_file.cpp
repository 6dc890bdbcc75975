// Downloads one file and says what it cost: download_file URL DESTINATION [MAGIC [IDLE_MS]]
// Standard output gets one JSON object; the exit code is 0 for a finished file and 1 for a failure.

#include "models/ModelDownloader.h"

#include <QCoreApplication>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>

#include <csignal>
#include <cstdio>
#include <sys/resource.h>

using namespace Qt::StringLiterals;
using namespace orvane;

namespace {

qint64 statusKiB(const QByteArray &field)
{
    QFile status(u"/proc/self/status"_s);
    if (!status.open(QFile::ReadOnly))
        return 0;
    for (const QByteArray &line : status.readAll().split('\n')) {
        if (line.startsWith(field))
            return line.mid(field.size() + 1).trimmed().split(' ').first().toLongLong();
    }
    return 0;
}

double milliseconds(const timeval &time)
{
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_usec) / 1e3;
}

double threadMilliseconds()
{
    rusage used{};
    getrusage(RUSAGE_THREAD, &used);
    return milliseconds(used.ru_utime) + milliseconds(used.ru_stime);
}

QCoro::Task<> run(ModelDownloader *downloader, QStringList arguments)
{
    const qint64 memoryBefore = statusKiB("VmRSS");
    const double mainThreadBefore = threadMilliseconds();
    QJsonObject report;
    try {
        co_await downloader->download(QUrl(arguments[1]), arguments[2], arguments.value(3).toLatin1(),
                                      [](const DownloadProgress &reached) {
                                          if (reached.isWaitingForNetwork)
                                              std::fprintf(stderr, "waiting\n");
                                      });
    } catch (const DownloadError &error) {
        report[u"kind"_s] = static_cast<int>(error.kind());
        report[u"error"_s] = error.description();
    }
    report[u"peakGrowthKiB"_s] = statusKiB("VmHWM") - memoryBefore;
    report[u"mainThreadMs"_s] = threadMilliseconds() - mainThreadBefore;
    std::printf("%s\n", QJsonDocument(report).toJson(QJsonDocument::Compact).constData());
    QCoreApplication::exit(report.contains(u"error"_s) ? 1 : 0);
}

} // namespace

int main(int argc, char **argv)
{
    // A limit on the size of files then shows as a failed write, like a full disk.
    std::signal(SIGXFSZ, SIG_IGN);
    QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() < 3) {
        std::fprintf(stderr, "usage: download_file URL DESTINATION [MAGIC [IDLE_MS]]\n");
        return 2;
    }
    const int idle = arguments.value(4, u"60000"_s).toInt();
    ModelDownloader downloader({.idleTimeout = std::chrono::milliseconds(idle)});
    QMetaObject::invokeMethod(&application, [&] { run(&downloader, arguments); }, Qt::QueuedConnection);
    return QCoreApplication::exec();
}
