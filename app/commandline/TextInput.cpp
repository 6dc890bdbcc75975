#include "app/commandline/TextInput.h"

#include "base/Error.h"
#include "base/OneTimeEvent.h"
#include "base/localization/Localization.h"

#include <QFile>
#include <QFileInfo>
#include <QScopeGuard>
#include <QSocketNotifier>
#include <QStringDecoder>

#include <array>
#include <cerrno>

#include <fcntl.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace orvane::TextInput {

namespace {

constexpr qsizetype mebibyte = 1024 * 1024;
constexpr qsizetype mostMebibytes = 16;

Error notRead(const QString &source)
{
    return Error(Localization::text(u"Не удалось прочитать файл") +
                 u" «%1»: %2"_s.arg(title(source), qt_error_string(errno)));
}

Error unusable(const QString &source, const QString &reason)
{
    return Error(u"%1: %2"_s.arg(title(source), reason));
}

/// Reading would block the event loop, and with it Ctrl-C, while nobody writes.
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

QCoro::Task<QByteArray> bytesOf(int descriptor, QString source, std::stop_token stop)
{
    QByteArray bytes;
    std::array<char, 65536> buffer;
    while (bytes.size() <= mostMebibytes * mebibyte) {
        co_await untilReadable(descriptor, stop);
        const ssize_t count = ::read(descriptor, buffer.data(), buffer.size());
        if (count == 0)
            co_return bytes;
        if (count > 0)
            bytes.append(buffer.data(), count);
        else if (errno != EAGAIN && errno != EINTR)
            throw notRead(source);
    }
    throw unusable(source, Localization::text(u"текст больше %1 МБ, это слишком много.").arg(mostMebibytes));
}

} // namespace

QString title(const QString &source)
{
    return source == standardInput ? Localization::text(u"стандартный ввод") : QFileInfo(source).fileName();
}

QCoro::Task<QString> read(QString source, std::stop_token stop)
{
    // Not waiting for somebody to write into a pipe, either.
    const int descriptor = source == standardInput ? ::fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0)
                                                   : ::open(QFile::encodeName(source).constData(),
                                                            O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0)
        throw notRead(source);
    const auto close = qScopeGuard([descriptor] { ::close(descriptor); });
    const QByteArray bytes = co_await bytesOf(descriptor, source, stop);

    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString text = decoder(bytes);
    if (decoder.hasError())
        throw unusable(source, Localization::text(u"это не текст в кодировке UTF-8."));
    if (text.trimmed().isEmpty())
        throw unusable(source, Localization::text(u"текста нет."));
    co_return text;
}

} // namespace orvane::TextInput
