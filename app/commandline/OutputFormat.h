#pragma once

#include "history/TranscriptRecord.h"

#include <QByteArray>
#include <QString>

#include <optional>

namespace orvane {

/// The forms in which the command line gives out a transcript.
enum class OutputFormat { Text, Markdown, SubRip, Json };

/// The format of a name such as "srt"; none for an unknown one.
[[nodiscard]] std::optional<OutputFormat> outputFormat(const QString &name);
/// With its dot.
[[nodiscard]] QString extension(OutputFormat format);

/// The record in that form, UTF-8: what the windows export, byte for byte.
[[nodiscard]] QByteArray rendered(const TranscriptRecord &record, OutputFormat format);

} // namespace orvane
