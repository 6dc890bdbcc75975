#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>

namespace orvane::test {

/// Everything in the file; nothing when it cannot be read.
[[nodiscard]] inline QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// Makes the file or replaces what is in it. Ends the test program when that fails.
inline void put(const QString &path, const QByteArray &content)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        qFatal("cannot write %s", qPrintable(path));
}

} // namespace orvane::test
