#include "base/localization/Localization.h"
#include "ui/presentation/Differences.h"
#include "ui/presentation/FileChooser.h"
#include "ui/presentation/SegmentList.h"
#include "ui/presentation/Spans.h"

#include <QAbstractItemModelTester>
#include <QRegularExpression>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace orvane;

/// How a record's texts and times look.
class TestShownRecord : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void marksDifferences_data();
    void marksDifferences();
    void keepsEveryWord();
    void findsWords();
    void knowsWhatIsHeard();
    void saysTimes_data();
    void saysTimes();
    void namesFiles_data();
    void namesFiles();
};

void TestShownRecord::marksDifferences_data()
{
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("after");
    QTest::addColumn<QString>("shownBefore");
    QTest::addColumn<QString>("shownAfter");

    QTest::newRow("the same") << "а б" << "а б" << "а б" << "а б";
    QTest::newRow("a word changed") << "привет мир" << "Привет, мир" << "<s>привет</s> мир"
                                    << "<b>Привет,</b> мир";
    QTest::newRow("a word more") << "а в" << "а б в" << "а в" << "а <b>б</b> в";
    QTest::newRow("a word less") << "а б в" << "а в" << "а <s>б</s> в" << "а в";
    QTest::newRow("nothing alike") << "а" << "б" << "<s>а</s>" << "<b>б</b>";
    QTest::newRow("markup is text") << "a <b>" << "a & <b>" << "a &lt;b&gt;" << "a <b>&amp;</b> &lt;b&gt;";
}

void TestShownRecord::marksDifferences()
{
    QFETCH(QString, before);
    QFETCH(QString, after);
    const QList<Difference> pieces = differencesOf(before, after);
    QCOMPARE(pieces.size(), 1);
    QTEST(pieces.first().before, "shownBefore");
    QTEST(pieces.first().after, "shownAfter");
}

void TestShownRecord::keepsEveryWord()
{
    QString before;
    QString after;
    for (int i = 0; i < 6000; ++i) { // more edits than are looked for at once
        before += QString::number(i) + u' ';
        after += QString::number(i % 3 ? i : -i) + (i % 40 == 39 ? u". "_s : u" "_s);
    }
    const auto joined = [](const QList<Difference> &pieces, QString Difference::*side) {
        QStringList words;
        for (const Difference &piece : pieces)
            words.append(QString(piece.*side).remove(QRegularExpression(u"</?[sb]>"_s)));
        return words.join(u' ').simplified();
    };
    const QList<Difference> pieces = differencesOf(before, after);
    QCOMPARE(joined(pieces, &Difference::before), before.trimmed());
    QCOMPARE(joined(pieces, &Difference::after), after.trimmed());
    QVERIFY(pieces.size() > 20);
}

void TestShownRecord::findsWords()
{
    SegmentList list;
    const QAbstractItemModelTester tester(&list, QAbstractItemModelTester::FailureReportingMode::QtTest);
    list.setSegments({{.start = 0, .end = 900, .text = u" Тепло <и> тепло"_s, .speaker = 1},
                      {.start = 1000, .end = 2000, .text = u" Холод"_s, .speaker = 2},
                      {.start = 2000, .end = 3000, .text = u" Оттепель: ТЕПЛО"_s, .speaker = 1}},
                     {{2, u"Анна"_s}});
    const int marked = list.roleNames().key("marked");
    list.find(u"тепло "_s);
    QCOMPARE(list.hits(), QList<int>({0, 2}));
    QCOMPARE(list.index(0).data(marked), u"<b>Тепло</b> &lt;и&gt; <b>тепло</b>"_s);
    QCOMPARE(list.index(1).data(marked), QString());
    QCOMPARE(list.speakerName(2), u"Анна"_s);
    QCOMPARE(list.speakerName(1), u"Спикер 1"_s);
    list.find({});
    QVERIFY(list.hits().isEmpty());
}

void TestShownRecord::knowsWhatIsHeard()
{
    SegmentList list;
    QCOMPARE(list.at(0), -1);
    list.setSegments({{.start = 500, .end = 900, .text = u"а"_s, .speaker = {}},
                      {.start = 1000, .end = 2000, .text = u"б"_s, .speaker = {}}},
                     {});
    QCOMPARE(list.at(499), -1);
    QCOMPARE(list.at(500), 0);
    QCOMPARE(list.at(950), 0);
    QCOMPARE(list.at(100'000), 1);
}

void TestShownRecord::saysTimes_data()
{
    QTest::addColumn<QString>("said");
    QTest::addColumn<QString>("russian");
    QTest::addColumn<QString>("english");

    const QDate today(2025, 3, 1);
    const auto row = [](const char *name, const std::function<QString()> &said, const char *russian,
                        const char *english) {
        Localization::setLanguage(u"ru"_s);
        const QString inRussian = said();
        Localization::setLanguage(u"en"_s);
        QTest::newRow(name) << inRussian + u'|' + said() << QString::fromUtf8(russian)
                            << QString::fromUtf8(english);
        Localization::setLanguage(u"ru"_s);
    };
    row("clock", [] { return Spans::clock(7999); }, "0:07", "0:07");
    row("an hour", [] { return Spans::clock(5'467'000); }, "1:31:07", "1:31:07");
    row("seconds left", [] { return Spans::remaining(22'001); }, "осталось 23 с", "23 s left");
    row("minutes left", [] { return Spans::remaining(239'000); }, "осталось 4 мин", "4 min left");
    row("hours left", [] { return Spans::remaining(3'900'000); }, "осталось 1 ч 5 мин", "1 h 5 min left");
    row("unknown", [] { return Spans::remaining(-1); }, "", "");
    row("yesterday", [&] { return Spans::day(QDate(2025, 2, 28), today); }, "Вчера", "Yesterday");
    row("this year", [&] { return Spans::day(QDate(2025, 1, 12), today); }, "12 января", "12 January");
    row("long ago", [&] { return Spans::day(QDate(2024, 5, 3), today); }, "3 мая 2024", "3 May 2024");
    row("megabytes", [] { return Spans::bytes(959'600'000); }, "960 МБ", "960 MB");
    row("gigabytes", [] { return Spans::bytes(1'540'000'000); }, "1,5 ГБ", "1.5 GB");
}

void TestShownRecord::saysTimes()
{
    QFETCH(QString, said);
    QFETCH(QString, russian);
    QFETCH(QString, english);
    QCOMPARE(said, russian + u'|' + english);
}

void TestShownRecord::namesFiles_data()
{
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("name");

    QTest::newRow("as it stands") << "Лекция 4. Теплообмен" << "Лекция 4. Теплообмен";
    QTest::newRow("a folder") << "../etc/passwd" << "etc-passwd";
    QTest::newRow("line breaks") << "а\n\tб" << "а б";
    QTest::newRow("nothing is left") << " ./ " << "Расшифровка";
    QTest::newRow("too long") << QString(300, u'я') << QString(120, u'я');
}

void TestShownRecord::namesFiles()
{
    QFETCH(QString, title);
    QTEST(fileNameFor(title), "name");
}

QTEST_GUILESS_MAIN(TestShownRecord)
#include "tst_shownrecord.moc"
