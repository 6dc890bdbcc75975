#include "ui/presentation/Differences.h"

#include <QRegularExpression>

#include <algorithm>
#include <vector>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

/// Beyond so many edits in a row the texts are taken for different there.
constexpr int maxEdits = 2000;
/// A piece ends at the first sentence that both texts end alike after so many words.
constexpr int wordsInPiece = 24;

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

/// E. Myers, An O(ND) Difference Algorithm and Its Variations, 1986: the greedy form, with the way back kept.
QList<Word> aligned(const QStringList &before, const QStringList &after)
{
    const int n = int(before.size());
    const int m = int(after.size());
    const int limit = std::min(n + m, maxEdits);
    std::vector<int> furthest(size_t(2 * limit + 3), 0);
    std::vector<std::vector<int>> history;
    const auto at = [limit](std::vector<int> &line, int k) -> int & { return line[size_t(k + limit + 1)]; };
    int edits = 0;
    bool isDone = false;
    for (; edits <= limit && !isDone; ++edits) {
        history.push_back(furthest);
        for (int k = -edits; k <= edits && !isDone; k += 2) {
            const bool down = k == -edits || (k != edits && at(furthest, k - 1) < at(furthest, k + 1));
            int x = down ? at(furthest, k + 1) : at(furthest, k - 1) + 1;
            while (x < n && x - k < m && before.at(x) == after.at(x - k))
                ++x;
            at(furthest, k) = x;
            isDone = x >= n && x - k >= m;
        }
    }
    QList<Word> words;
    if (!isDone) {
        for (const QString &word : before)
            words.append({word, Side::Before});
        for (const QString &word : after)
            words.append({word, Side::After});
        return words;
    }
    int x = n;
    int y = m;
    for (int d = edits - 1; d >= 0; --d) {
        std::vector<int> &line = history[size_t(d)];
        const int k = x - y;
        const bool down = k == -d || (k != d && at(line, k - 1) < at(line, k + 1));
        const int fromK = down ? k + 1 : k - 1;
        const int fromX = d == 0 ? 0 : at(line, fromK);
        const int fromY = d == 0 ? 0 : fromX - fromK;
        while (x > fromX && y > fromY) {
            words.append({after.at(y - 1), Side::Both});
            --x;
            --y;
        }
        if (d > 0)
            words.append(down ? Word{after.at(y - 1), Side::After} : Word{before.at(x - 1), Side::Before});
        x = fromX;
        y = fromY;
    }
    std::ranges::reverse(words);
    return words;
}

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
    for (const Word &word : aligned(wordsOf(before), wordsOf(after))) {
        if (word.side != Side::After)
            append(piece.before, word.text, word.side == Side::Before, "s"_L1);
        if (word.side != Side::Before)
            append(piece.after, word.text, word.side == Side::After, "b"_L1);
        if (++count >= wordsInPiece && word.side != Side::Before && endsSentence(word.text)) {
            pieces.append(std::exchange(piece, {}));
            count = 0;
        }
    }
    if (count > 0)
        pieces.append(piece);
    return pieces;
}

} // namespace orvane
