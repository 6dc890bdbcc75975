#include "base/files/FileLock.h"

#include "base/files/FileControl.h"

#include <QFile>

#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace orvane {

std::optional<FileLock> FileLock::tryLock(const QString &path)
{
    const int descriptor =
        ::open(QFile::encodeName(path).constData(), O_RDWR | O_CREAT | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (descriptor < 0)
        return std::nullopt;
    FileLock lock(descriptor);
    if (!FileControl::tryLock(descriptor))
        return std::nullopt;
    return lock;
}

FileLock::FileLock(FileLock &&other) noexcept : m_descriptor(std::exchange(other.m_descriptor, -1)) {}

FileLock &FileLock::operator=(FileLock &&other) noexcept
{
    std::swap(m_descriptor, other.m_descriptor);
    return *this;
}

FileLock::~FileLock()
{
    if (m_descriptor >= 0)
        ::close(m_descriptor);
}

} // namespace orvane
