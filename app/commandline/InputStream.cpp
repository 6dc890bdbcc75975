#include "app/commandline/InputStream.h"

#include "base/OneTimeEvent.h"
#include "base/files/FileError.h"
#include "base/localization/Localization.h"

#include <QFile>
#include <QFileInfo>
#include <QSocketNotifier>

#include <cerrno>

#include <fcntl.h>
#include <unistd.h>

namespace orvane {

namespace {

constexpr qsizetype pieceSize = 65536;

/// Does not wait for somebody to write into a pipe, either.
int opened(const QString &source)
{
    const int descriptor =
        source == InputStream::standardInput
            ? ::fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0)
            : ::open(QFile::encodeName(source).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0)
        throw FileError::notRead(InputStream::title(source), errno);
    return descriptor;
}

QCoro::Task<> untilReadable(int descriptor, std::stop_token stop)
{
    const std::shared_ptr<OneTimeEvent> readable = OneTimeEvent::create();
    QSocketNotifier notifier(descriptor, QSocketNotifier::Read);
    QObject::connect(&notifier, &QSocketNotifier::activated, &notifier, [&notifier, readable] {
        notifier.setEnabled(false);
        readable->happen();
    });
    co_await readable->wait(stop);
}

} // namespace

QString InputStream::title(const QString &source)
{
    return source == standardInput ? Localization::text(u"стандартный ввод") : QFileInfo(source).fileName();
}

InputStream::InputStream(const QString &source) : m_source(source), m_descriptor(opened(source)) {}

InputStream::~InputStream()
{
    ::close(m_descriptor);
}

QCoro::Task<QByteArray> InputStream::next(std::stop_token stop)
{
    QByteArray piece(pieceSize, Qt::Uninitialized);
    while (true) {
        co_await untilReadable(m_descriptor, stop);
        const ssize_t count = ::read(m_descriptor, piece.data(), pieceSize);
        if (count >= 0) {
            piece.truncate(count);
            co_return piece;
        }
        if (errno != EAGAIN && errno != EINTR)
            throw FileError::notRead(title(m_source), errno);
    }
}

} // namespace orvane
