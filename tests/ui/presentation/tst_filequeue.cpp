#include "base/OneTimeEvent.h"
#include "ui/presentation/FileQueue.h"

#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace orvane;

/// Files whose transcription ends when the test says so.
class TestFileQueue : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void goesOnAfterABadFile();
    void changesItsOrder();
    void takesOut();
    void outlivesNothing();

private:
    /// "name:state" of every row.
    [[nodiscard]] QStringList shown() const;
    void add(const QStringList &names);
    /// Ends the file that is transcribed: with that failure, or well when it is empty.
    void end(const QString &failure = {});

    static QCoro::Task<std::optional<QUuid>> transcribe(TestFileQueue *test, QString path,
                                                        std::stop_token stop);

    std::shared_ptr<OneTimeEvent> m_end;
    QString m_failure;
    QStringList m_transcribed;
    std::unique_ptr<FileQueue> m_queue;
};

void TestFileQueue::init()
{
    m_transcribed.clear();
    m_queue = std::make_unique<FileQueue>(FileQueue::Transcriber{
        .transcribe = [this](const QString &path,
                             std::stop_token stop) { return transcribe(this, path, stop); },
        .choose = {}});
}

QCoro::Task<std::optional<QUuid>> TestFileQueue::transcribe(TestFileQueue *test, QString path,
                                                            std::stop_token stop)
{
    test->m_end = OneTimeEvent::create();
    test->m_transcribed.append(path.section(u'/', -1));
    co_await test->m_end->wait(stop);
    if (!test->m_failure.isEmpty())
        throw Error(test->m_failure);
    co_return QUuid::createUuid();
}

QStringList TestFileQueue::shown() const
{
    QStringList rows;
    for (const QVariantMap &row : m_queue->rows())
        rows.append(row.value(u"name"_s).toString() + u':' + row.value(u"state"_s).toString());
    return rows;
}

void TestFileQueue::add(const QStringList &names)
{
    QList<QUrl> urls;
    for (const QString &name : names)
        urls.append(QUrl::fromLocalFile(u"/nowhere/"_s + name));
    m_queue->add(urls);
}

void TestFileQueue::end(const QString &failure)
{
    m_failure = failure;
    m_end->happen();
}

void TestFileQueue::goesOnAfterABadFile()
{
    const QSignalSpy finished(m_queue.get(), &FileQueue::finished);
    m_queue->add({QUrl(u"https://example.org/a.mp3"_s)});
    QCOMPARE(shown(), QStringList({u"a.mp3:failed"_s}));
    m_queue->removeAt(0);

    add({u"bad"_s, u"good"_s});
    QVERIFY(m_queue->isWorking());
    QCOMPARE(m_queue->rows().first().value(u"detail"_s), u"Ждёт, пока освободится движок"_s);
    m_queue->setProgress(u"Распознаю"_s, 0.5, 90'000);
    QVERIFY(m_queue->rows().first().value(u"detail"_s).toString().endsWith(u"осталось 2 мин"_s));
    end(u"не звук"_s);
    QTRY_COMPARE(shown(), QStringList({u"bad:failed"_s, u"good:working"_s}));
    QCOMPARE(m_queue->rows().first().value(u"detail"_s), u"не звук"_s);
    end();
    QTRY_COMPARE(shown(), QStringList({u"bad:failed"_s, u"good:done"_s}));
    QCOMPARE(m_queue->rows().at(0).value(u"recordId"_s), QString());
    QVERIFY(!m_queue->rows().at(1).value(u"recordId"_s).toString().isEmpty());
    QTRY_VERIFY(!m_queue->isWorking());

    QTRY_COMPARE(finished.size(), 2);
    QVERIFY(finished.last().first().toUuid().isNull()); // it was not one file

    m_queue->retry(1); // it did not fail
    m_queue->retry(0);
    QCOMPARE(shown(), QStringList({u"good:done"_s, u"bad:working"_s}));
}

void TestFileQueue::changesItsOrder()
{
    add({u"a"_s, u"b"_s, u"c"_s, u"d"_s});
    m_queue->move(3, 1);
    m_queue->move(1, 0); // the first is being worked on
    m_queue->move(2, 7);
    QCOMPARE(shown(), QStringList({u"a:working"_s, u"d:waiting"_s, u"b:waiting"_s, u"c:waiting"_s}));
    for (int i = 0; i < 4; ++i) {
        const qsizetype ended = m_transcribed.size();
        end();
        QTRY_VERIFY(i == 3 || m_transcribed.size() > ended);
    }
    QCOMPARE(m_transcribed, QStringList({u"a"_s, u"d"_s, u"b"_s, u"c"_s}));
}

void TestFileQueue::takesOut()
{
    add({u"a"_s, u"b"_s, u"c"_s});
    m_queue->removeAt(1);
    m_queue->removeAt(0); // cancels it
    QTRY_COMPARE(shown(), QStringList({u"c:working"_s}));
    QCOMPARE(m_transcribed, QStringList({u"a"_s, u"c"_s}));
    m_queue->removeAt(5);
}

void TestFileQueue::outlivesNothing()
{
    add({u"a"_s, u"b"_s});
    m_queue.reset();
    end();
    QCoreApplication::processEvents();
    QCOMPARE(m_transcribed, QStringList({u"a"_s}));
}

QTEST_GUILESS_MAIN(TestFileQueue)
#include "tst_filequeue.moc"
