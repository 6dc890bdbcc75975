#include "update/UpdateFileName.h"

#include "update/PackageSuffix.h"

#include <QRegularExpression>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

// At most 240 bytes, of the 255 that file systems allow. The end is kept, with the suffix.
constexpr qsizetype maxLength = 80;

QString safe(const QString &name)
{
    const qsizetype slash = std::max(name.lastIndexOf(u'/'), name.lastIndexOf(u'\\'));
    QString piece = name.sliced(slash + 1);
    piece.removeIf([](QChar c) { return !c.isPrint(); });
    piece = piece.right(maxLength).trimmed();
    while (piece.startsWith(u'.') || piece.startsWith(u' '))
        piece.remove(0, 1);
    return piece;
}

QString fromDisposition(const QByteArray &header)
{
    static const QRegularExpression plain(u"filename\\s*=\\s*\"?([^\";]+)"_s,
                                          QRegularExpression::CaseInsensitiveOption);
    return safe(plain.match(QString::fromUtf8(header)).captured(1));
}

} // namespace

QString updateFileName(const QByteArray &contentDisposition, const QUrl &url, const QString &version)
{
    if (const QString name = fromDisposition(contentDisposition); !name.isEmpty())
        return name;
    if (const QString name = safe(url.fileName(QUrl::FullyDecoded)); !name.isEmpty())
        return name;
    return u"Orvane-%1.%2"_s.arg(safe(version), packageSuffix());
}

} // namespace orvane
