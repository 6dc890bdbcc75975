#include "app/commandline/TextInput.h"

#include "app/commandline/InputStream.h"
#include "base/Error.h"
#include "base/localization/Localization.h"

#include <QStringDecoder>

using namespace Qt::StringLiterals;

namespace orvane::TextInput {

namespace {

constexpr qsizetype mebibyte = 1024 * 1024;
constexpr qsizetype maxMebibytes = 16;

Error unusable(const QString &source, const QString &reason)
{
    return Error(u"%1: %2"_s.arg(InputStream::title(source), reason));
}

QCoro::Task<QByteArray> bytesOf(QString source, std::stop_token stop)
{
    InputStream input(source);
    QByteArray bytes;
    while (bytes.size() <= maxMebibytes * mebibyte) {
        const QByteArray piece = co_await input.next(stop);
        if (piece.isEmpty())
            co_return bytes;
        bytes += piece;
    }
    throw unusable(source, Localization::text(u"текст больше %1 МБ, это слишком много.").arg(maxMebibytes));
}

} // namespace

QCoro::Task<QString> read(QString source, std::stop_token stop)
{
    const QByteArray bytes = co_await bytesOf(source, stop);
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString text = decoder(bytes);
    if (decoder.hasError())
        throw unusable(source, Localization::text(u"это не текст в кодировке UTF-8."));
    if (text.trimmed().isEmpty())
        throw unusable(source, Localization::text(u"текста нет."));
    co_return text;
}

} // namespace orvane::TextInput
