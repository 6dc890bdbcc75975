#include "history/HistoryStore.h"
#include "tests/history/Samples.h"
#include "tests/support/FakeFileChooser.h"
#include "tests/support/Files.h"
#include "tests/support/TaskResult.h"
#include "ui/presentation/HistoryList.h"
#include "ui/presentation/Notices.h"
#include "ui/presentation/RecordSaver.h"

#include <QAbstractItemModelTester>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace orvane;
using namespace orvane::test;

class TestHistoryList : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void finds();
    void takesBackWhatWasDeleted();
    void deletesForGood_data();
    void deletesForGood();
    void savesWhereTheUserSays();

private:
    [[nodiscard]] QStringList titles() const;
    [[nodiscard]] QString idOf(const QString &title) const;
    [[nodiscard]] qsizetype filesOfHistory() const
    {
        return QDir(m_home->filePath(u"Orvane/History"_s)).entryList({u"*.json"_s}).size();
    }
    void waitForDisk()
    {
        const TaskResult flushed(m_store->flush());
        QTRY_VERIFY(flushed.isDone());
    }

    std::unique_ptr<QTemporaryDir> m_home;
    std::unique_ptr<HistoryStore> m_store;
    FakeFileChooser m_chosen;
    std::unique_ptr<Notices> m_notices;
    std::unique_ptr<RecordSaver> m_saver;
    std::unique_ptr<HistoryList> m_list;
};

void TestHistoryList::init()
{
    m_list.reset();
    m_home = std::make_unique<QTemporaryDir>();
    m_store = std::make_unique<HistoryStore>(
        StandardFolders{.applicationSupport = m_home->path(), .resources = {}, .temporary = m_home->path()});
    m_notices = std::make_unique<Notices>();
    m_saver = std::make_unique<RecordSaver>(*m_store, m_chosen, *m_notices);
    m_list = std::make_unique<HistoryList>(*m_store, *m_saver, *m_notices);
    QTRY_VERIFY(m_list->isLoaded());
    for (const QString &title : {u"Смета"_s, u"Отпуск"_s, u"Ремонт/1"_s}) {
        TranscriptRecord record = Samples::plainRecord(title);
        record.id = QUuid::createUuid();
        record.text = u"Говорили про: "_s + title.toUpper();
        m_store->add(record);
    }
    QCOMPARE(titles(), QStringList({u"Ремонт/1"_s, u"Отпуск"_s, u"Смета"_s}));
}

QStringList TestHistoryList::titles() const
{
    QStringList titles;
    for (const RecordSummary &record : m_list->rows())
        titles.append(record.title);
    return titles;
}

QString TestHistoryList::idOf(const QString &title) const
{
    for (const RecordSummary &record : m_store->records()) {
        if (record.title == title)
            return record.id.toString();
    }
    return {};
}

void TestHistoryList::finds()
{
    const QAbstractItemModelTester tester(m_list.get(),
                                          QAbstractItemModelTester::FailureReportingMode::QtTest);
    m_list->setSearch(u"о"_s); // letter by letter, quicker than it answers
    m_list->setSearch(u"от"_s);
    m_list->setSearch(u"отпуск "_s);
    QTRY_COMPARE(titles(), QStringList({u"Отпуск"_s}));
    m_store->rename(QUuid(idOf(u"Смета"_s)), u"Смета на отпуск"_s);
    QTRY_COMPARE(titles(), QStringList({u"Отпуск"_s, u"Смета на отпуск"_s}));
    m_list->setSearch(u"нигде"_s);
    QTRY_COMPARE(titles(), QStringList());
    m_list->setSearch({});
    QTRY_COMPARE(titles().size(), 3);
}

void TestHistoryList::takesBackWhatWasDeleted()
{
    m_list->toggleSelected(0);
    m_list->selectTo(1);
    QCOMPARE(m_list->selection(), QStringList({idOf(u"Ремонт/1"_s), idOf(u"Отпуск"_s)}));
    m_list->remove(m_list->selection());
    QCOMPARE(titles(), QStringList({u"Смета"_s}));
    QCOMPARE(m_list->selection(), QStringList());
    m_notices->act();
    QCOMPARE(titles(), QStringList({u"Ремонт/1"_s, u"Отпуск"_s, u"Смета"_s}));
    waitForDisk();
    QCOMPARE(filesOfHistory(), 3);
}

void TestHistoryList::deletesForGood_data()
{
    QTest::addColumn<QString>("when");
    for (const char *when : {"the notice goes", "another is deleted", "the program ends"})
        QTest::newRow(when) << when;
}

void TestHistoryList::deletesForGood()
{
    QFETCH(QString, when);
    m_list->remove({idOf(u"Отпуск"_s)});
    waitForDisk();
    QCOMPARE(filesOfHistory(), 3);
    if (when == "the notice goes"_L1)
        m_notices->end();
    else if (when == "another is deleted"_L1)
        m_list->remove({idOf(u"Смета"_s)});
    else
        m_list.reset();
    waitForDisk();
    QCOMPARE(filesOfHistory(), 2);
}

void TestHistoryList::savesWhereTheUserSays()
{
    m_chosen.path = m_home->filePath(u"saved.txt"_s);
    m_list->save({idOf(u"Ремонт/1"_s)}, u"txt"_s);
    QTRY_VERIFY2(m_notices->text().startsWith(u"Сохранено"_s), qPrintable(m_notices->text()));
    QCOMPARE(contentOf(m_chosen.path), u"Говорили про: РЕМОНТ/1"_s.toUtf8());
    QCOMPARE(m_chosen.suggested, u"Ремонт-1.txt"_s);

    m_chosen.path = m_home->path();
    m_store->rename(QUuid(idOf(u"Отпуск"_s)), u"Смета"_s);
    m_list->save({idOf(u"Ремонт/1"_s), m_list->rows().at(1).id.toString(), idOf(u"Смета"_s)}, u"md"_s);
    QTRY_COMPARE(QDir(m_home->path()).entryList({u"*.md"_s}),
                 QStringList({u"Ремонт-1.md"_s, u"Смета 2.md"_s, u"Смета.md"_s}));

    m_chosen.path = m_home->filePath(u"no/such/folder.txt"_s);
    m_list->save({idOf(u"Ремонт/1"_s)}, u"txt"_s);
    QTRY_VERIFY2(m_notices->text().contains(u"folder.txt"_s), qPrintable(m_notices->text()));
}

QTEST_GUILESS_MAIN(TestHistoryList)
#include "tst_historylist.moc"
