#pragma once

#include <QRegularExpression>
#include <QString>
#include <QStringList>
#include <QTest>

#include <algorithm>
#include <numeric>
#include <vector>

namespace orvane::test {

/// What an engine hears differs a little from one processor to another, by rounding.
inline constexpr double maxWordError = 0.1;

/// The words of a text in lower case, without punctuation and with one spelling of Russian's ё.
[[nodiscard]] inline QStringList wordsOf(const QString &text)
{
    static const QRegularExpression between(QStringLiteral("[^\\p{L}\\p{N}]+"));
    return text.toLower().replace(u'ё', u'е').split(between, Qt::SkipEmptyParts);
}

/// How many words must be added, removed or replaced to make what was heard what was said, for each word
/// said.
[[nodiscard]] inline double wordError(const QString &heard, const QString &said)
{
    const QStringList from = wordsOf(heard);
    const QStringList to = wordsOf(said);
    std::vector<qsizetype> edits(static_cast<size_t>(to.size()) + 1);
    std::iota(edits.begin(), edits.end(), 0);
    for (const QString &word : from) {
        qsizetype diagonal = edits.front()++;
        for (size_t i = 1; i < edits.size(); ++i) {
            const qsizetype replaced = diagonal + (word == to[static_cast<qsizetype>(i) - 1] ? 0 : 1);
            diagonal = edits[i];
            edits[i] = std::min({replaced, edits[i] + 1, edits[i - 1] + 1});
        }
    }
    return static_cast<double>(edits.back()) / static_cast<double>(std::max<qsizetype>(to.size(), 1));
}

} // namespace orvane::test

/// Holds what an engine heard to what was said, with the tolerance above.
#define VERIFY_WORDS(heard, said)                                                                            \
    QVERIFY2(orvane::test::wordError(heard, said) <= orvane::test::maxWordError, qPrintable(heard))
