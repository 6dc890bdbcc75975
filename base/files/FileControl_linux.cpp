#include "base/files/FileControl.h"

#include <QFile>

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace orvane::FileControl {

Locked tryLock(int handle)
{
    int result = -1;
    do
        result = flock(handle, LOCK_EX | LOCK_NB);
    while (result != 0 && errno == EINTR);
    if (result == 0)
        return Locked::Yes;
    return errno == EWOULDBLOCK ? Locked::ByAnother : Locked::Failed;
}

bool isOpenAs(int handle, const QString &path)
{
    struct stat open{};
    struct stat named{};
    return fstat(handle, &open) == 0 && stat(QFile::encodeName(path).constData(), &named) == 0 &&
           open.st_dev == named.st_dev && open.st_ino == named.st_ino;
}

qint64 allocated(int handle)
{
    struct stat file{};
    return fstat(handle, &file) == 0 ? file.st_blocks * 512 : 0;
}

Written write(int handle, qint64 offset, std::span<const char> bytes)
{
    while (!bytes.empty()) {
        const ssize_t count = pwrite(handle, bytes.data(), bytes.size(), offset);
        if (count < 0) {
            if (errno == EINTR)
                continue;
            return errno == ENOSPC || errno == EDQUOT ? Written::DiskFull : Written::Failed;
        }
        bytes = bytes.subspan(static_cast<size_t>(count));
        offset += count;
    }
    return Written::All;
}

void startFlush(int handle, qint64 offset, qint64 length)
{
    sync_file_range(handle, offset, length, SYNC_FILE_RANGE_WRITE);
}

bool flush(int handle)
{
    return fdatasync(handle) == 0;
}

} // namespace orvane::FileControl
