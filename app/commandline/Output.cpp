#include "app/commandline/Output.h"

#include "base/Error.h"
#include "base/localization/Localization.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include <cerrno>
#include <cstdio>

#include <fcntl.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace orvane::Output {

namespace {

// Both return what went wrong, or nothing.

QString replaceFile(const QByteArray &bytes, const QString &path)
{
    QSaveFile file(path);
    const bool written =
        file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.commit();
    return written ? QString() : file.errorString();
}

// A pipe or a device is written to; replacing it by a file would destroy it.
QString writeInPlace(const QByteArray &bytes, const QString &path)
{
    QFile file(path);
    const bool written =
        file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) && file.write(bytes) == bytes.size();
    return written ? QString() : file.errorString();
}

} // namespace

void reserveStandardStreams()
{
    // Open for reading only, so that writing there still fails.
    int place = ::open("/dev/null", O_RDONLY);
    while (place >= 0 && place <= STDERR_FILENO)
        place = ::open("/dev/null", O_RDONLY);
    if (place > STDERR_FILENO)
        ::close(place);
}

void write(const QByteArray &bytes)
{
    const size_t written = std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stdout);
    if (written == size_t(bytes.size()) && std::fflush(stdout) == 0)
        return;
    throw Error(Localization::text(u"Не удалось записать результат: ") + qt_error_string(errno));
}

void write(const QByteArray &bytes, const QString &destination)
{
    if (destination == standardOutput) {
        write(bytes);
        return;
    }
    const QFileInfo present(destination);
    const bool isDevice = present.exists() && !present.isFile();
    const QString failure = isDevice ? writeInPlace(bytes, destination) : replaceFile(bytes, destination);
    if (!failure.isEmpty())
        throw Error(Localization::text(u"Не удалось записать файл") +
                    u" «%1»: %2"_s.arg(destination, failure));
}

void requireWritable(const QString &destination)
{
    if (destination == standardOutput)
        return;
    const QFileInfo present(destination);
    const bool isDevice = present.exists() && !present.isFile() && !present.isDir();
    if (isDevice)
        return; // written to where it is: its folder may belong to another user
    const QFileInfo folder(present.isDir() ? destination : present.absolutePath());
    if (!folder.isDir() || !folder.isWritable())
        throw Error(Localization::text(u"В эту папку нельзя записать результат: ") + folder.filePath());
}

void complain(const QString &sentence)
{
    std::fprintf(stderr, "%s\n", sentence.toUtf8().constData());
}

} // namespace orvane::Output
