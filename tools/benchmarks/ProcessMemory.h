#pragma once

#include <QByteArray>
#include <QFile>
#include <QList>

#include <malloc.h>

namespace orvane::ProcessMemory {

/// What this process alone has in memory, in MiB, without what is free; 0 when that cannot be read.
inline double ofThisOne()
{
    malloc_trim(0);
    QFile status(QStringLiteral("/proc/self/smaps_rollup"));
    if (!status.open(QFile::ReadOnly))
        return 0;
    double kibibytes = 0;
    for (const QByteArray &line : status.readAll().split('\n')) {
        if (line.startsWith("Private_"))
            kibibytes += line.simplified().split(' ').value(1).toDouble();
    }
    return kibibytes / 1024;
}

} // namespace orvane::ProcessMemory
