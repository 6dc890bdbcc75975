#include "audio/MediaFile.h"

#include "audio/AudioDecoderError.h"
#include "base/files/FileError.h"
#include "base/localization/Localization.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

QByteArray plainSuffix(const QString &path)
{
    const QByteArray suffix = QFileInfo(path).suffix().toUtf8();
    const auto isPlain = [](char c) {
        return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
    };
    return std::ranges::all_of(suffix, isPlain) ? suffix : QByteArray();
}

// Not blocking: opening a pipe that nobody writes to would wait forever.
int openToRead(const QString &path)
{
    const int descriptor = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0)
        throw AudioDecoderError::couldNotOpen(FileError::reason(errno));
    return descriptor;
}

} // namespace

MediaFile::MediaFile(const QString &path, std::stop_token stop)
    : m_suffix(plainSuffix(path)),
      m_stop(std::move(stop)),
      m_descriptor(openToRead(path))
{
    try {
        requireContent();
    } catch (...) {
        ::close(m_descriptor);
        throw;
    }
}

MediaFile::~MediaFile()
{
    ::close(m_descriptor);
}

void MediaFile::requireContent()
{
    struct stat status{};
    if (::fstat(m_descriptor, &status) != 0)
        throw AudioDecoderError::couldNotOpen(FileError::reason(errno));
    if (S_ISDIR(status.st_mode))
        throw AudioDecoderError::couldNotOpen(Localization::text(u"это папка"));
    if (!S_ISREG(status.st_mode))
        throw AudioDecoderError::couldNotOpen(Localization::text(u"это не обычный файл"));
    if (status.st_size == 0)
        throw AudioDecoderError::couldNotOpen(Localization::text(u"файл пуст"));
    m_size = status.st_size;
}

std::int64_t MediaFile::read(std::int64_t position, std::byte *buffer, std::int64_t size) noexcept
{
    ssize_t got = 0;
    do {
        got = ::pread(m_descriptor, buffer, size_t(size), position);
    } while (got < 0 && errno == EINTR);
    m_failed = m_failed || got < 0;
    return got;
}

} // namespace orvane
