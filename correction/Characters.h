#pragma once

#include <QList>
#include <QString>
#include <QStringList>

/// Texts measured in characters as people see them: grapheme clusters, such as a letter with its accents, a
/// flag or a line break of two codes. All take time in proportion to the text's length.
namespace orvane::Characters {

/// The text's beginning of at most that many characters.
[[nodiscard]] QString first(const QString &text, qsizetype count);

/// Consecutive pieces of exactly that many characters, the last one possibly shorter.
[[nodiscard]] QStringList pieces(const QString &text, qsizetype count);

struct Sentence
{
    /// In UTF-16 units.
    qsizetype size;
    /// In characters.
    qsizetype length;
};

/// The stretches that end with the end of a sentence or of a line, and what is left after the last of them.
/// Each begins where the one before ends.
[[nodiscard]] QList<Sentence> sentences(const QString &text);

} // namespace orvane::Characters
