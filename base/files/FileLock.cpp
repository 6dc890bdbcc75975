#include "base/files/FileLock.h"

#include "base/files/FileControl.h"

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
        return std::nullopt;
    FileLock lock(descriptor);
    if (!FileControl::tryLock(descriptor))
        return std::nullopt;
    return lock;
}

std::optional<FileLock> FileLock::ofFolder(const QString &path)
{
    const int descriptor = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0)
        return std::nullopt;
    FileLock lock(descriptor);
    const QDeadlineTimer deadline(longestWait);
    while (!FileControl::tryLock(descriptor)) {
        if (errno != EWOULDBLOCK || deadline.hasExpired())
            return std::nullopt;
        std::this_thread::sleep_for(waitInterval);
    }
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
