#include "update/UpdateFileName.h"

#include "update/PackageSuffix.h"

#include <QStringDecoder>

#include <algorithm>
#include <optional>

using namespace Qt::StringLiterals;

namespace orvane::UpdateFileName {

namespace {

// File systems allow 255; the rest is for what is added to a name while it is made.
constexpr qsizetype longestName = 200;
constexpr qsizetype longestSuffix = 20;

/// One parameter of the header: `name`=value, or `name`="value" with escapes.
struct Parameter
{
    QByteArray name;
    QByteArray value;
};

QByteArray quotedValue(const QByteArray &header, qsizetype &at)
{
    QByteArray value;
    for (++at; at < header.size() && header[at] != '"'; ++at) {
        if (header[at] == '\\' && at + 1 < header.size())
            ++at;
        value += header[at];
    }
    return value;
}

QList<Parameter> parametersOf(const QByteArray &header)
{
    QList<Parameter> parameters;
    qsizetype at = header.indexOf(';');
    while (at >= 0 && at < header.size()) {
        const qsizetype equals = header.indexOf('=', at);
        if (equals < 0)
            break;
        Parameter parameter{.name = header.sliced(at + 1, equals - at - 1).trimmed().toLower(), .value = {}};
        at = equals + 1;
        while (at < header.size() && header[at] == ' ')
            ++at;
        const bool isQuoted = at < header.size() && header[at] == '"';
        if (isQuoted)
            parameter.value = quotedValue(header, at);
        const qsizetype end = header.indexOf(';', at);
        if (!isQuoted)
            parameter.value = header.sliced(at, (end < 0 ? header.size() : end) - at).trimmed();
        parameters << parameter;
        at = end;
    }
    return parameters;
}

QString inUtf8OrLatin1(const QByteArray &bytes)
{
    QStringDecoder utf8(QStringDecoder::Utf8);
    const QString text = utf8(bytes);
    return utf8.hasError() ? QString::fromLatin1(bytes) : text;
}

/// RFC 8187: charset'language'percent-encoded.
QString extendedValue(const QByteArray &value)
{
    const QList<QByteArray> pieces = value.split('\'');
    if (pieces.size() != 3)
        return {};
    return inUtf8OrLatin1(QByteArray::fromPercentEncoding(pieces[2]));
}

QString fromDisposition(const QByteArray &header)
{
    QString plain;
    for (const Parameter &parameter : parametersOf(header)) {
        if (parameter.name == "filename*" && !safe(extendedValue(parameter.value)).isEmpty())
            return safe(extendedValue(parameter.value));
        if (parameter.name == "filename")
            plain = safe(inUtf8OrLatin1(parameter.value));
    }
    return plain;
}

bool isVisible(char32_t character)
{
    switch (QChar::category(character)) {
    case QChar::Other_Control:
    case QChar::Other_Format: // such as those that turn the direction of reading
    case QChar::Other_Surrogate:
    case QChar::Other_NotAssigned:
    case QChar::Separator_Line:
    case QChar::Separator_Paragraph:
        return false;
    default:
        return true;
    }
}

QString withinBytes(QString text, qsizetype bytes)
{
    text.truncate(bytes); // no code unit takes less than one
    while (text.toUtf8().size() > bytes || (!text.isEmpty() && text.back().isHighSurrogate()))
        text.chop(1);
    return text;
}

QString shortened(const QString &name)
{
    const qsizetype dot = name.lastIndexOf(u'.');
    const QString suffix = dot > 0 ? name.sliced(dot) : QString();
    if (suffix.toUtf8().size() > longestSuffix)
        return withinBytes(name, longestName);
    return withinBytes(name.chopped(suffix.size()), longestName - suffix.toUtf8().size()) + suffix;
}

} // namespace

QString safe(const QString &name)
{
    const auto lastSlash = std::max(name.lastIndexOf(u'/'), name.lastIndexOf(u'\\'));
    QString visible;
    for (const char32_t character : name.sliced(lastSlash + 1).toUcs4()) {
        if (isVisible(character))
            visible += QString::fromUcs4(&character, 1);
    }
    visible = visible.trimmed();
    while (visible.startsWith(u'.') || visible.startsWith(u' '))
        visible.remove(0, 1);
    return visible.toUtf8().size() > longestName ? shortened(visible) : visible;
}

QString suggested(const QByteArray &contentDisposition, const QUrl &url, const QString &version)
{
    if (const QString name = fromDisposition(contentDisposition); !name.isEmpty())
        return name;
    if (const QString name = safe(url.fileName(QUrl::FullyDecoded)); !name.isEmpty())
        return name;
    QString plainVersion = version;
    plainVersion.replace(u'/', u'_').replace(u'\\', u'_');
    return safe(u"Orvane-%1.%2"_s.arg(plainVersion, packageSuffix()));
}

} // namespace orvane::UpdateFileName
