#include "base/system/Machine.h"

#include <QFile>
#include <QRegularExpression>

#include <unistd.h>

using namespace Qt::StringLiterals;

namespace orvane::Machine {

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

} // namespace

qint64 physicalMemory()
{
    const long pages = sysconf(_SC_PHYS_PAGES);
    const long pageSize = sysconf(_SC_PAGE_SIZE);
    return pages > 0 && pageSize > 0 ? qint64(pages) * pageSize : 0;
}

QString identifier(const QString &root)
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

QString productName(const QString &root)
{
    return firstLineOf(root + u"/sys/class/dmi/id/product_name"_s);
}

} // namespace orvane::Machine
