#include "app/commandline/Output.h"

#include "base/files/FileError.h"
#include "base/files/FileReplacement.h"
#include "base/localization/Localization.h"

#include <QFileInfo>

#include <cerrno>
#include <cstdio>

#include <fcntl.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace orvane::Output {

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
    throw Error(Localization::text(u"Не удалось записать результат: ") + FileError::reason(errno));
}

void write(const QByteArray &bytes, const QString &destination)
{
    if (destination != standardOutput) {
        replaceFile(destination, bytes, FileAccess::Usual);
        return;
    }
    const bool wantsLineFeed = !bytes.isEmpty() && !bytes.endsWith('\n') && ::isatty(STDOUT_FILENO) != 0;
    write(wantsLineFeed ? bytes + '\n' : bytes);
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
