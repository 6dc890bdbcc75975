#include "tests/support/Rows.h"

#include "transcript/TranscriptSanitizer.h"

using namespace Qt::StringLiterals;
using namespace orvane;
using namespace orvane::test;

namespace {

QList<DisplaySegment> segmentsOf(const QStringList &texts)
{
    QList<DisplaySegment> segments;
    for (const QString &text : texts)
        segments.append(DisplaySegment::from(
            RawSegment{.start = 1000 * segments.size(), .end = 1000 * segments.size() + 500, .text = text}));
    return segments;
}

} // namespace

class TestSegments : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void timecode_data()
    {
        const Rows<qint64, QString> row("start", "timecode");
        row("below a second", qint64(999), u"0:00"_s);
        row("seconds", qint64(7'000), u"0:07"_s);
        row("minutes", qint64(754'999), u"12:34"_s);
        row("last of an hour", qint64(3'599'999), u"59:59"_s);
        row("one hour", qint64(3'600'000), u"1:00:00"_s);
        row("hours", qint64(3'723'000), u"1:02:03"_s);
        row("more than a day", qint64(360'000'000), u"100:00:00"_s);
    }

    void timecode()
    {
        QFETCH(const qint64, start);
        DisplaySegment segment;
        segment.start = start;
        QTEST(segment.timecode(), "timecode");
    }

    void madeFromWhatTheEngineReturned()
    {
        const QList<RawSegment> raw = {{.start = 5, .end = 70, .text = u" Да. "_s},
                                       {.start = 70, .end = 70, .text = QString()}};
        const QList<DisplaySegment> segments = DisplaySegment::from(raw);
        QCOMPARE(segments.size(), 2);
        QCOMPARE(segments[0].start, 5);
        QCOMPARE(segments[0].end, 70);
        QCOMPARE(segments[0].text, u" Да. "_s);
        QVERIFY(!segments[0].speaker);
        QVERIFY(!segments[0].id.isNull());
        QVERIFY(segments[0].id != segments[1].id);
    }

    void collapseRepeats_data()
    {
        const Rows<QStringList, int, QList<int>> row("texts", "keep", "kept");

        row("blanks and case do not count", {u" Hello"_s, u"hello "_s, u"HELLO"_s, u"Hi"_s, u"hello"_s}, 2,
            QList{0, 1, 3, 4});
        row("Cyrillic and line breaks", {u"Спасибо!"_s, u"\nСПАСИБО!\t"_s, u"спасибо!"_s}, 2, QList{0, 1});
        row("punctuation counts", {u"да"_s, u"да."_s, u"да"_s, u"да."_s}, 1, QList{0, 1, 2, 3});
        row("not more than is kept", {u"a"_s, u"a"_s}, 2, QList{0, 1});
        row("blank ones all stay", {u""_s, u" "_s, u""_s, u"\n"_s, u""_s}, 2, QList{0, 1, 2, 3, 4});
        row("a blank one ends a run", {u"a"_s, u"a"_s, u" "_s, u"a"_s, u"a"_s, u"a"_s}, 2,
            QList{0, 1, 2, 3, 4});
        row("keep one", {u"a"_s, u"a"_s, u"b"_s, u"a"_s}, 1, QList{0, 2, 3});
        row("keep none", {u"a"_s, u""_s, u"b"_s}, 0, QList<int>());
        row("empty list", {}, 2, QList<int>());
    }

    void collapseRepeats()
    {
        QFETCH(const QStringList, texts);
        QFETCH(const int, keep);
        QFETCH(const QList<int>, kept);
        const QList<DisplaySegment> segments = segmentsOf(texts);
        QList<DisplaySegment> expected;
        for (const int index : kept)
            expected.append(segments[index]);
        QVERIFY(TranscriptSanitizer::collapseRepeats(segments, keep) == expected);
    }
};

QTEST_GUILESS_MAIN(TestSegments)
#include "tst_segments.moc"
