#include "base/files/FileLock.h"

#include "base/files/FileControl.h"
#include "base/files/FileError.h"

#include <QDeadlineTimer>
#include <QFile>

#include <cerrno>
#include <chrono>
#include <thread>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace std::chrono_literals;

namespace orvane {

namespace {

constexpr auto longestWait = 2s;
constexpr auto waitInterval = 5ms;

} // namespace

std::optional<FileLock> FileLock::tryLock(const QString &path)
{
    const int descriptor =
        ::open(QFile::encodeName(path).constData(), O_RDWR | O_CREAT | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (descriptor < 0)
        throw FileError::notWritten(path, errno);
    FileLock lock(descriptor);
    switch (FileControl::tryLock(descriptor)) {
    case FileControl::Locked::Yes:
        return lock;
    case FileControl::Locked::ByAnother:
        return std::nullopt;
    case FileControl::Locked::Failed:
        throw FileError::notWritten(path, errno);
    }
    return std::nullopt;
}

std::optional<FileLock> FileLock::ofFolder(const QString &path)
{
    const int descriptor = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0)
        return std::nullopt;
    FileLock lock(descriptor);
    const QDeadlineTimer deadline(longestWait);
    FileControl::Locked locked = FileControl::tryLock(descriptor);
    while (locked == FileControl::Locked::ByAnother && !deadline.hasExpired()) {
        std::this_thread::sleep_for(waitInterval);
        locked = FileControl::tryLock(descriptor);
    }
    return locked == FileControl::Locked::Yes ? std::optional(std::move(lock)) : std::nullopt;
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
