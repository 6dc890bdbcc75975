#include "base/files/FileStamp.h"

#include <QScopeGuard>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace orvane {

namespace {

FileStamp stampOf(const struct stat &status)
{
    return {.size = status.st_size,
            .modified = qint64{status.st_mtim.tv_sec} * 1'000'000'000 + status.st_mtim.tv_nsec,
            .inode = status.st_ino};
}

bool readFully(int descriptor, char *target, qint64 size)
{
    while (size > 0) {
        const ssize_t got = read(descriptor, target, static_cast<size_t>(size));
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            return false;
        target += got;
        size -= got;
    }
    return true;
}

} // namespace

std::optional<FileStamp> FileStamp::of(const QByteArray &path)
{
    struct stat status;
    if (stat(path.constData(), &status) != 0 || !S_ISREG(status.st_mode))
        return std::nullopt;
    return stampOf(status);
}

std::optional<FileStamp> FileStamp::of(int descriptor)
{
    struct stat status;
    if (fstat(descriptor, &status) != 0)
        return std::nullopt;
    return stampOf(status);
}

std::optional<FileStamp> readRegularFile(const QByteArray &path, QByteArray &contents)
{
    const int descriptor = open(path.constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor < 0)
        return std::nullopt;
    const auto closing = qScopeGuard([descriptor] { close(descriptor); });

    struct stat status;
    if (fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode))
        return std::nullopt;
    contents.resize(status.st_size);
    if (!readFully(descriptor, contents.data(), status.st_size))
        return std::nullopt;
    return stampOf(status);
}

} // namespace orvane
