#include "ui/presentation/Differences.h"

#include <QRegularExpression>

#include <algorithm>
#include <vector>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

/// After so many edits the way found so far is kept: what is looked for grows with their square.
constexpr int maxEdits = 400;
/// A piece ends at the first sentence that both texts end alike after so many words.
constexpr int wordsInPiece = 24;
/// And where there is none, after so many.
constexpr int maxWordsInPiece = 120;

enum class Side { Both, Before, After };

struct Word
{
    QString text;
    Side side;
};

QStringList wordsOf(const QString &text)
{
    static const QRegularExpression blanks(u"\\s+"_s);
    return text.split(blanks, Qt::SkipEmptyParts);
}

/// How two lists of words become each other, found piece by piece.
class Alignment
{
public:
    Alignment(QStringList before, QStringList after) : m_before(std::move(before)), m_after(std::move(after))
    {}

    [[nodiscard]] QList<Word> words()
    {
        while (m_x < m_before.size() || m_y < m_after.size())
            align();
        return m_words;
    }

private:
    using Line = std::vector<int>;

    /// E. Myers, An O(ND) Difference Algorithm and Its Variations, 1986: the greedy form, with the way back
    /// kept, from where the last piece ended to the end or as far as so many edits lead.
    void align()
    {
        const int n = int(m_before.size()) - m_x;
        const int m = int(m_after.size()) - m_y;
        const int limit = std::min(n + m, maxEdits);
        Line furthest(size_t(2 * limit + 3), 0);
        std::vector<Line> history;
        int bestX = 0;
        int bestY = 0;
        int bestEdits = 0;
        for (int edits = 0; edits <= limit; ++edits) {
            history.push_back(furthest);
            for (int k = -edits; k <= edits; k += 2) {
                const bool down = isDown(furthest, k, edits);
                int x = down ? at(furthest, k + 1) : at(furthest, k - 1) + 1;
                while (x < n && x - k < m && m_before.at(m_x + x) == m_after.at(m_y + x - k))
                    ++x;
                at(furthest, k) = x;
                const int y = x - k;
                if (x > n || y > m)
                    continue;
                if (x + y > bestX + bestY) {
                    bestX = x;
                    bestY = y;
                    bestEdits = edits;
                }
                if (x == n && y == m) {
                    goBack(history, n, m, edits);
                    return;
                }
            }
        }
        goBack(history, bestX, bestY, bestEdits);
    }

    static int &at(Line &line, int k) { return line[line.size() / 2 + size_t(k)]; }
    static bool isDown(Line &line, int k, int edits)
    {
        return k == -edits || (k != edits && at(line, k - 1) < at(line, k + 1));
    }

    void goBack(std::vector<Line> &history, int toX, int toY, int edits)
    {
        QList<Word> piece;
        int x = toX;
        int y = toY;
        for (int d = edits; d >= 0; --d) {
            Line &line = history[size_t(d)];
            const int k = x - y;
            const bool down = isDown(line, k, d);
            const int fromK = down ? k + 1 : k - 1;
            const int fromX = d == 0 ? 0 : at(line, fromK);
            const int fromY = d == 0 ? 0 : fromX - fromK;
            while (x > fromX && y > fromY) {
                piece.append({m_after.at(m_y + y - 1), Side::Both});
                --x;
                --y;
            }
            if (d > 0)
                piece.append(down ? Word{m_after.at(m_y + y - 1), Side::After}
                                  : Word{m_before.at(m_x + x - 1), Side::Before});
            x = fromX;
            y = fromY;
        }
        std::ranges::reverse(piece);
        m_words += piece;
        m_x += toX;
        m_y += toY;
    }

    const QStringList m_before;
    const QStringList m_after;
    int m_x = 0;
    int m_y = 0;
    QList<Word> m_words;
};

bool endsSentence(const QString &word)
{
    static const QString ends = u".!?…"_s;
    return ends.contains(word.back());
}

void append(QString &html, const QString &word, bool isMarked, QLatin1StringView tag)
{
    if (!html.isEmpty())
        html += u' ';
    html += isMarked ? u"<%1>%2</%1>"_s.arg(tag, word.toHtmlEscaped()) : word.toHtmlEscaped();
}

} // namespace

QList<Difference> differencesOf(const QString &before, const QString &after)
{
    QList<Difference> pieces;
    Difference piece;
    int count = 0;
    for (const Word &word : Alignment(wordsOf(before), wordsOf(after)).words()) {
        if (word.side != Side::After)
            append(piece.before, word.text, word.side == Side::Before, "s"_L1);
        if (word.side != Side::Before)
            append(piece.after, word.text, word.side == Side::After, "b"_L1);
        ++count;
        const bool endsWell = word.side != Side::Before && endsSentence(word.text);
        if ((count >= wordsInPiece && endsWell) || count >= maxWordsInPiece) {
            pieces.append(std::exchange(piece, {}));
            count = 0;
        }
    }
    if (count > 0)
        pieces.append(piece);
    return pieces;
}

} // namespace orvane
