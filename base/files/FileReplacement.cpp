#include "base/files/FileReplacement.h"

#include "base/files/FileControl.h"
#include "base/files/FileError.h"

#include <QFile>
#include <QFileInfo>
#include <QScopeGuard>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdio>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

void require(bool done, const QString &path)
{
    if (!done)
        throw FileError::notWritten(path, errno);
}

void writeInto(int descriptor, QByteArrayView content, const QString &path)
{
    while (!content.isEmpty()) {
        const ssize_t count = ::write(descriptor, content.data(), size_t(content.size()));
        if (count < 0 && errno == EINTR)
            continue;
        require(count >= 0, path);
        content = content.sliced(count);
    }
}

mode_t modeFor(const struct stat *replaced, FileAccess access)
{
    if (access == FileAccess::Private)
        return S_IRUSR | S_IWUSR;
    return replaced ? replaced->st_mode & ALLPERMS
                    : S_IRUSR | S_IWUSR | S_IRGRP | S_IWGRP | S_IROTH | S_IWOTH;
}

/// Other threads and processes may be writing the same file.
QByteArray nameBeside(const QByteArray &path)
{
    static std::atomic<unsigned> number = 0;
    const QByteArray suffix =
        '.' + QByteArray::number(::getpid()) + '-' + QByteArray::number(++number) + ".tmp";
    // A name that is as long as a name may be is cut between two letters.
    qsizetype end = std::min(path.size(), path.lastIndexOf('/') + 1 + NAME_MAX - suffix.size());
    while (end < path.size() && (static_cast<unsigned char>(path[end]) & 0xC0U) == 0x80)
        --end;
    return path.first(end) + suffix;
}

} // namespace

void replaceFile(const QString &path, QByteArrayView content, FileAccess access, Durability durability)
{
    const QString canonical = QFileInfo(path).canonicalFilePath();
    const QByteArray target = QFile::encodeName(canonical.isEmpty() ? path : canonical);
    struct stat status{};
    const bool exists = ::stat(target.constData(), &status) == 0;
    const bool isReplaced = !exists || S_ISREG(status.st_mode);
    const QByteArray written = isReplaced ? nameBeside(target) : target;

    const int flags = O_WRONLY | O_CLOEXEC | (isReplaced ? O_CREAT | O_EXCL : 0);
    const int descriptor = ::open(written.constData(), flags, modeFor(exists ? &status : nullptr, access));
    require(descriptor >= 0, path);
    const auto close = qScopeGuard([descriptor] { ::close(descriptor); });
    if (!isReplaced) {
        writeInto(descriptor, content, path);
        return;
    }
    auto remove = qScopeGuard([&written] { ::unlink(written.constData()); });
    if (exists && access == FileAccess::Usual)
        ::fchmod(descriptor, status.st_mode & ALLPERMS); // the umask does not count for what was there
    writeInto(descriptor, content, path);
    require(durability == Durability::Unflushed || FileControl::flush(descriptor), path);
    require(std::rename(written.constData(), target.constData()) == 0, path);
    remove.dismiss();
}

} // namespace orvane
