#include "tests/support/Rows.h"
#include "ui/LiveTextLines.h"

#include <QFontMetricsF>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace orvane;
using namespace orvane::test;

namespace {

constexpr qsizetype lineCount = 2;

QFont font()
{
    QFont font;
    font.setPixelSize(13);
    return font;
}

/// "кот дом кот дом кот": so many words.
QString words(int count, const QString &word = u"слово"_s)
{
    return QStringList(count, word).join(u' ');
}

QStringList wholeLines(const LiveTextLines &lines)
{
    QStringList whole;
    for (const auto &[settled, unsettled] : lines.lines())
        whole.append((settled + u' ' + unsettled).trimmed());
    return whole;
}

} // namespace

class TestLiveTextLines : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void ends_data()
    {
        const Rows<QString, QString, QStringList, bool> row("settled", "unsettled", "lines", "isCut");
        const QString three = words(3); // as wide as a line
        row("nothing", {}, {}, {}, false);
        row("blank", u" \n"_s, u" "_s, {}, false);
        row("one line", {}, u"слово"_s, {u"слово"_s}, false);
        row("both kinds in a line", u"слово"_s, u"слово"_s, {u"слово слово"_s}, false);
        row("full line", three, {}, {three}, false);
        row("border between lines", three, u"слово"_s, {three, u"слово"_s}, false);
        row("front is cut by lines", words(6), words(2), {three, words(2)}, true);
        row("space that was heard", u"  слово\n"_s, u"\tслово"_s, {u"слово слово"_s}, false);
    }

    void ends()
    {
        QFETCH(const QString, settled);
        QFETCH(const QString, unsettled);
        LiveTextLines lines(font(), width(), lineCount);
        lines.setText({.settled = settled, .unsettled = unsettled});
        QTEST(wholeLines(lines), "lines");
        QTEST(lines.isCut(), "isCut");
    }

    void breaksAWordWiderThanALine()
    {
        LiveTextLines lines(font(), width(), lineCount);
        const QString word(20, u'ш');
        lines.setText({.settled = u"слово"_s, .unsettled = word});
        QCOMPARE(lines.lines().size(), lineCount);
        QCOMPARE(wholeLines(lines).join(QString()), word);
        QVERIFY(lines.isCut());
    }

    void tellsWhatIsSettled()
    {
        LiveTextLines lines(font(), width(), lineCount);
        lines.setText({.settled = words(4), .unsettled = words(1)});
        QCOMPARE(lines.lines(), (QList<LiveTextLines::Line>{{words(3), {}}, {words(1), words(1)}}));
    }

    /// Whatever is appended, settled or corrected further on: a word stays in its line, and lines only go up.
    void wordsStayInTheirLines()
    {
        const QString text = u"Сегодня мы собрались, чтобы обсудить план на следующий квартал и кто-нибудь "
                             "расскажет о бюджете, потому что Чрезвычайнодлинноеслово не помещается."_s;
        const QStringList all = text.split(u' ');
        const qreal wide = 3 * width();
        LiveTextLines whole(font(), wide, 100);
        whole.setText({.settled = text, .unsettled = {}});
        const QStringList expected = wholeLines(whole);
        QCOMPARE_GE(expected.size(), 3);

        LiveTextLines shown(font(), wide, lineCount);
        qsizetype bottom = 0;
        for (qsizetype said = 1; said <= all.size(); ++said) {
            const qsizetype settled = std::max<qsizetype>(0, said - 5);
            shown.setText({.settled = all.first(settled).join(u' '),
                           .unsettled = all.sliced(settled, said - settled).join(u' ')});
            const QStringList lines = wholeLines(shown);
            qsizetype line = bottom; // the line of the whole text that the last one shown is
            while (line < expected.size() && !expected.at(line).startsWith(lines.constLast()))
                ++line;
            QVERIFY2(line < expected.size(), qPrintable(lines.join(u'|')));
            bottom = line;
            if (lines.size() > 1)
                QCOMPARE(lines.constFirst(), expected.at(line - 1));
            QCOMPARE(shown.isCut(), line > 1);
        }
        QCOMPARE(bottom, expected.size() - 1);
    }

    /// A later dictation begins anew.
    void beginsAnew()
    {
        LiveTextLines lines(font(), width(), lineCount);
        lines.setText({.settled = words(30), .unsettled = {}});
        lines.setText({.settled = words(1, u"иначе"_s), .unsettled = {}});
        QCOMPARE(wholeLines(lines), QStringList{u"иначе"_s});
        QVERIFY(!lines.isCut());
    }

private:
    /// Room for three words and not for four.
    [[nodiscard]] static qreal width() { return QFontMetricsF(font()).horizontalAdvance(words(3)) * 1.1; }
};

QTEST_MAIN(TestLiveTextLines)
#include "tst_livetextlines.moc"
