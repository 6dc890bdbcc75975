#include "app/commandline/OutputFormat.h"

#include "history/TranscriptExporter.h"

#include <QMap>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

const QMap<QString, OutputFormat> &formats()
{
    static const QMap<QString, OutputFormat> byName = {{u"txt"_s, OutputFormat::Text},
                                                       {u"md"_s, OutputFormat::Markdown},
                                                       {u"srt"_s, OutputFormat::SubRip},
                                                       {u"json"_s, OutputFormat::Json}};
    return byName;
}

QByteArray content(const TranscriptRecord &record, OutputFormat format)
{
    const auto exported = [&record](TranscriptExporter::Format as) {
        const QString text = record.text.trimmed(); // recognised text begins with a blank
        return TranscriptExporter::content(as, record.title, record.displaySegments(), text).toUtf8();
    };
    switch (format) {
    case OutputFormat::Text:
        return exported(TranscriptExporter::Format::PlainText);
    case OutputFormat::Markdown:
        return exported(TranscriptExporter::Format::Markdown);
    case OutputFormat::SubRip:
        return exported(TranscriptExporter::Format::SubRip);
    case OutputFormat::Json:
        return record.json();
    }
    Q_UNREACHABLE();
}

} // namespace

std::optional<OutputFormat> outputFormat(const QString &name)
{
    const auto found = formats().constFind(name);
    return found == formats().cend() ? std::nullopt : std::optional(*found);
}

QString extension(OutputFormat format)
{
    return formats().key(format);
}

QByteArray rendered(const TranscriptRecord &record, OutputFormat format)
{
    QByteArray text = content(record, format);
    if (!text.isEmpty() && !text.endsWith('\n'))
        text += '\n';
    return text;
}

} // namespace orvane
