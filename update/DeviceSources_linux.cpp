#include "update/DeviceSources.h"

#include <QFile>
#include <QLocale>
#include <QRegularExpression>
#include <QSysInfo>

#include <unistd.h>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

// The system's files are made while they are read and have no size.
constexpr qint64 longestLine = 4096;

QString firstLineOf(const QString &path)
{
    QFile file(path);
    if (!file.open(QFile::ReadOnly))
        return {};
    return QString::fromUtf8(file.readLine(longestLine)).trimmed();
}

QString machineId(const QString &root)
{
    // Until the first start is over the file may say "uninitialized".
    static const QRegularExpression form(u"^[0-9a-f]{32}$"_s);
    for (const QString &path : {u"/etc/machine-id"_s, u"/var/lib/dbus/machine-id"_s}) {
        const QString id = firstLineOf(root + path);
        if (form.match(id).hasMatch())
            return id;
    }
    return {};
}

/// Of the first processor.
QString processorName(const QString &root)
{
    QFile file(root + u"/proc/cpuinfo"_s);
    if (!file.open(QFile::ReadOnly))
        return {};
    for (QByteArray line = file.readLine(longestLine); !line.isEmpty(); line = file.readLine(longestLine)) {
        const qsizetype colon = line.indexOf(':');
        if (colon > 0 && line.first(colon).trimmed() == "model name")
            return QString::fromUtf8(line.sliced(colon + 1)).trimmed();
    }
    return {};
}

double physicalMemory()
{
    const long pages = sysconf(_SC_PHYS_PAGES);
    const long pageSize = sysconf(_SC_PAGE_SIZE);
    return pages > 0 && pageSize > 0 ? double(pages) * double(pageSize) : 0;
}

} // namespace

DeviceSources DeviceSources::ofThisMachine(const QString &root)
{
    return {.platformUUID = [root] { return machineId(root); },
            .os =
                [] {
                    return u"%1 (%2 %3)"_s.arg(QSysInfo::prettyProductName(), QSysInfo::kernelType(),
                                               QSysInfo::kernelVersion());
                },
            .model = [root] { return firstLineOf(root + u"/sys/class/dmi/id/product_name"_s); },
            .cpu = [root] { return processorName(root); },
            .memory = [] { return physicalMemory(); },
            .locale = [] { return QLocale::system().name(); }};
}

} // namespace orvane
