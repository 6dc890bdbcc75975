#include "correction/Characters.h"

#include <QTextBoundaryFinder>

namespace orvane::Characters {

namespace {

QTextBoundaryFinder characterEnds(const QString &text)
{
    return {QTextBoundaryFinder::Grapheme, text};
}

/// Moves on by so many characters, or to the end; where that is.
qsizetype advance(QTextBoundaryFinder &finder, const QString &text, qsizetype count)
{
    for (; count > 0 && finder.position() < text.size(); --count)
        finder.toNextBoundary();
    return finder.position();
}

bool endsSentence(QStringView character)
{
    constexpr QStringView ends = u".!?…\n";
    return (character.size() == 1 && ends.contains(character.front())) || character == u"\r\n";
}

} // namespace

QString first(const QString &text, qsizetype count)
{
    QTextBoundaryFinder finder = characterEnds(text);
    return text.first(advance(finder, text, count));
}

QStringList pieces(const QString &text, qsizetype count)
{
    QStringList pieces;
    QTextBoundaryFinder finder = characterEnds(text);
    while (finder.position() < text.size()) {
        const qsizetype start = finder.position();
        pieces.append(text.sliced(start, advance(finder, text, count) - start));
    }
    return pieces;
}

QList<Sentence> sentences(const QString &text)
{
    QList<Sentence> sentences;
    QTextBoundaryFinder finder = characterEnds(text);
    qsizetype start = 0;
    qsizetype length = 0;
    for (qsizetype begin = 0; begin < text.size(); begin = finder.position()) {
        const qsizetype end = advance(finder, text, 1);
        ++length;
        if (end < text.size() && !endsSentence(QStringView(text).sliced(begin, end - begin)))
            continue;
        sentences.append({.size = end - start, .length = length});
        start = end;
        length = 0;
    }
    return sentences;
}

} // namespace orvane::Characters
