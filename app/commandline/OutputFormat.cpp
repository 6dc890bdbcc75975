#include "app/commandline/OutputFormat.h"

#include "history/TranscriptExporter.h"

#include <algorithm>
#include <iterator>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

struct NamedFormat
{
    QLatin1StringView name;
    OutputFormat format;
    /// None for a record as it is stored.
    std::optional<TranscriptExporter::Format> exported;
};

constexpr NamedFormat formats[] = {
    {"txt"_L1, OutputFormat::Text, TranscriptExporter::Format::PlainText},
    {"md"_L1, OutputFormat::Markdown, TranscriptExporter::Format::Markdown},
    {"srt"_L1, OutputFormat::SubRip, TranscriptExporter::Format::SubRip},
    {"json"_L1, OutputFormat::Json, std::nullopt},
};

const NamedFormat &named(OutputFormat format)
{
    return *std::ranges::find(formats, format, &NamedFormat::format);
}

} // namespace

std::optional<OutputFormat> outputFormat(const QString &name)
{
    const auto found = std::ranges::find(formats, name, &NamedFormat::name);
    return found == std::end(formats) ? std::nullopt : std::optional(found->format);
}

QString extension(OutputFormat format)
{
    const auto exported = named(format).exported;
    return exported ? TranscriptExporter::extension(*exported) : u".json"_s;
}

QByteArray rendered(const TranscriptRecord &record, OutputFormat format)
{
    const auto exported = named(format).exported;
    return exported ? TranscriptExporter::exported(*exported, record) : record.json();
}

} // namespace orvane
