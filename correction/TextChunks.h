#pragma once

#include <QString>
#include <QStringList>

/// Texts cut to lengths in characters as people see them: grapheme clusters, such as a letter with its
/// accents, a flag or a line break of two codes. All take time in proportion to the text's length.
namespace orvane::TextChunks {

/// The text's beginning of at most that many characters.
[[nodiscard]] QString first(const QString &text, qsizetype count);

/// The text in chunks of whole sentences and lines, each of at most that many characters and without blanks
/// around it. A sentence that is longer is cut. A text that fits is one chunk as it stands.
[[nodiscard]] QStringList split(const QString &text, qsizetype maxChars);

/// Consecutive pieces of exactly that many characters, the last one possibly shorter.
[[nodiscard]] QStringList hardSplit(const QString &text, qsizetype maxChars);

} // namespace orvane::TextChunks
