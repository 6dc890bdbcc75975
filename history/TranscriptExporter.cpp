#include "history/TranscriptExporter.h"

#include <optional>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

bool isBlank(QChar c)
{
    return c == u'\t' || c.category() == QChar::Separator_Space;
}

// Line breaks stay.
QString withoutOuterBlanks(QStringView text)
{
    while (!text.isEmpty() && isBlank(text.front()))
        text = text.sliced(1);
    while (!text.isEmpty() && isBlank(text.back()))
        text.chop(1);
    return text.toString();
}

} // namespace

QString TranscriptExporter::extension(Format format)
{
    switch (format) {
    case Format::PlainText:
        return u".txt"_s;
    case Format::SubRip:
        return u".srt"_s;
    case Format::Markdown:
        return u".md"_s;
    }
    Q_UNREACHABLE();
}

QByteArray TranscriptExporter::exported(Format format, const TranscriptRecord &record)
{
    return content(format, record.title, record.displaySegments(), record.text.trimmed(), record.speakerNames)
        .toUtf8();
}

QString TranscriptExporter::content(Format format, const QString &baseName,
                                    const QList<DisplaySegment> &segments, const QString &text,
                                    const SpeakerNames &names)
{
    switch (format) {
    case Format::PlainText:
        return text;
    case Format::SubRip:
        return srt(segments);
    case Format::Markdown:
        return markdown(baseName, segments, text, names);
    }
    Q_UNREACHABLE();
}

QString TranscriptExporter::srt(const QList<DisplaySegment> &segments)
{
    QString subtitles;
    for (qsizetype i = 0; i < segments.size(); ++i) {
        const DisplaySegment &segment = segments.at(i);
        if (i > 0)
            subtitles += u'\n';
        subtitles += QString::number(i + 1) + u'\n' + time(segment.start) + u" --> "_s + time(segment.end) +
                     u'\n' + withoutOuterBlanks(segment.text) + u'\n';
    }
    return subtitles;
}

QString TranscriptExporter::time(qint64 milliseconds)
{
    const QChar zero = u'0';
    return u"%1:%2:%3,%4"_s.arg(milliseconds / 3'600'000, 2, 10, zero)
        .arg(milliseconds % 3'600'000 / 60'000, 2, 10, zero)
        .arg(milliseconds % 60'000 / 1000, 2, 10, zero)
        .arg(milliseconds % 1000, 3, 10, zero);
}

QString TranscriptExporter::markdown(const QString &title, const QList<DisplaySegment> &segments,
                                     const QString &plainText, const SpeakerNames &names)
{
    QString document = u"# "_s + title + u"\n\n"_s;
    if (segments.isEmpty())
        return document + plainText;

    std::optional<qint64> heading;
    for (const DisplaySegment &segment : segments) {
        if (segment.speaker && segment.speaker != heading) {
            const QString number = u"Спикер "_s + QString::number(*segment.speaker);
            document += u"\n**"_s + names.value(*segment.speaker, number) + u"**\n\n"_s;
            heading = segment.speaker;
        }
        document += u'`' + segment.timecode() + u"`  "_s + withoutOuterBlanks(segment.text) + u"\n\n"_s;
    }
    return document;
}

} // namespace orvane
