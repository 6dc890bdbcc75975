#include "correction/TextChunks.h"

#include <QTextBoundaryFinder>

#include <utility>

namespace orvane::TextChunks {

namespace {

/// A place in a text that moves from character to character.
class Position
{
public:
    explicit Position(const QString &text) : m_text(text), m_finder(QTextBoundaryFinder::Grapheme, text) {}

    [[nodiscard]] bool isAtEnd() const { return m_offset == m_text.size(); }
    /// In UTF-16 units.
    [[nodiscard]] qsizetype offset() const { return m_offset; }

    /// Over one character.
    QStringView advance()
    {
        const qsizetype before = std::exchange(m_offset, m_finder.toNextBoundary());
        return m_text.sliced(before, m_offset - before);
    }

    /// Over so many characters, or to the end.
    void advance(qsizetype count)
    {
        for (; count > 0 && !isAtEnd(); --count)
            advance();
    }

    /// To the end of a sentence, of a line or of the text; over how many characters.
    qsizetype advanceSentence()
    {
        qsizetype length = 0;
        bool isOver = false;
        for (; !isOver && !isAtEnd(); ++length)
            isOver = endsSentence(advance());
        return length;
    }

private:
    static bool endsSentence(QStringView character)
    {
        constexpr QStringView ends = u".!?…\n";
        return character.size() == 1 ? ends.contains(character.front()) : character == u"\r\n";
    }

    const QStringView m_text;
    QTextBoundaryFinder m_finder;
    qsizetype m_offset = 0;
};

} // namespace

QString first(const QString &text, qsizetype count)
{
    Position position(text);
    position.advance(count);
    return text.first(position.offset());
}

QStringList split(const QString &text, qsizetype maxChars)
{
    QStringList chunks;
    qsizetype begin = 0;
    qsizetype end = 0;
    qsizetype length = 0;
    const auto close = [&] {
        const QString chunk = text.sliced(begin, end - begin).trimmed();
        if (length > maxChars)
            chunks.append(hardSplit(chunk, maxChars));
        else if (!chunk.isEmpty())
            chunks.append(chunk);
        begin = end;
        length = 0;
    };

    Position position(text);
    while (!position.isAtEnd()) {
        const qsizetype sentence = position.advanceSentence();
        if (length > 0 && length + sentence > maxChars)
            close();
        end = position.offset();
        length += sentence;
    }
    if (begin == 0 && length <= maxChars)
        return {text};
    close();
    return chunks;
}

QStringList hardSplit(const QString &text, qsizetype maxChars)
{
    QStringList pieces;
    Position position(text);
    while (!position.isAtEnd()) {
        const qsizetype begin = position.offset();
        position.advance(maxChars);
        pieces.append(text.sliced(begin, position.offset() - begin));
    }
    return pieces;
}

} // namespace orvane::TextChunks
