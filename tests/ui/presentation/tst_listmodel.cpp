#include "ui/presentation/RowModel.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace orvane;

class TestListModel : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void tellsWhatDiffers_data();
    void tellsWhatDiffers();
};

void TestListModel::tellsWhatDiffers_data()
{
    QTest::addColumn<QString>("before"); // one letter a row; in capitals it is changed
    QTest::addColumn<QString>("after");
    QTest::addColumn<QString>("staying"); // rows that a view must not lose

    QTest::newRow("filled") << "" << "abc" << "";
    QTest::newRow("emptied") << "abc" << "" << "";
    QTest::newRow("in front") << "abc" << "xabc" << "abc";
    QTest::newRow("behind") << "abc" << "abcx" << "abc";
    QTest::newRow("one gone") << "abcd" << "abd" << "abd";
    QTest::newRow("one replaced") << "abc" << "axc" << "ac";
    QTest::newRow("the same twice") << "aa" << "aaa" << "aa";
    QTest::newRow("changed at both ends") << "abcd" << "AbxcD" << "ABCD";
    QTest::newRow("moved") << "abcd" << "acbd" << "ad";
}

void TestListModel::tellsWhatDiffers()
{
    const auto rowsOf = [](const QString &letters) {
        QList<QVariantMap> rows;
        for (const QChar letter : letters)
            rows.append({{u"key"_s, QString(letter).toLower()}, {u"text"_s, QString(letter)}});
        return rows;
    };
    QFETCH(QString, before);
    QFETCH(QString, after);
    QFETCH(QString, staying);
    RowModel model({"key", "text"});
    const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    model.setRows(rowsOf(before));
    QList<QPersistentModelIndex> rows;
    for (int i = 0; i < model.count(); ++i)
        rows.append(model.index(i));
    const QSignalSpy counted(&model, &RowModel::countChanged);
    const QSignalSpy changed(&model, &RowModel::dataChanged);

    model.setRows(rowsOf(after));
    QString shown;
    for (int i = 0; i < model.count(); ++i)
        shown += model.index(i).data(Qt::UserRole + 1).toString();
    QCOMPARE(shown, after);
    QCOMPARE(counted.count(), before.size() == after.size() ? 0 : 1);
    QString kept;
    for (const QPersistentModelIndex &row : rows)
        kept += row.data(Qt::UserRole).toString();
    for (const QChar letter : staying.toLower())
        QVERIFY2(kept.contains(letter), qPrintable(kept));
    const auto isChanged = [](QChar c) { return c.isUpper(); };
    QCOMPARE(changed.count(), std::ranges::count_if(after, isChanged));
}

QTEST_GUILESS_MAIN(TestListModel)
#include "tst_listmodel.moc"
