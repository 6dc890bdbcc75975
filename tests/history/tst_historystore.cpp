#include "history/HistoryStore.h"

#include "base/localization/Localization.h"
#include "history/FileRecordSaver.h"
#include "tests/history/Samples.h"
#include "tests/support/TaskResult.h"

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <QCoroTask>

using namespace Qt::StringLiterals;
using namespace orvane;
using Samples::plainRecord;

namespace {

QStringList titles(const HistoryStore &store)
{
    QStringList titles;
    for (const TranscriptRecord &record : store.records())
        titles.append(record.title);
    return titles;
}

// A blank record when there is none, which equals no record of these tests.
TranscriptRecord recordIn(const HistoryStore &store, const QUuid &id)
{
    return store.record(id).value_or(TranscriptRecord());
}

QString failureOf(QCoro::Task<> task)
{
    const TaskResult result(std::move(task));
    return QTest::qWaitFor([&] { return result.isDone(); }) ? result.error() : u"it does not end"_s;
}

QList<RecordEvent> eventsOf(const TranscriptRecord &record)
{
    return record.events.value_or(QList<RecordEvent>());
}

} // namespace

class TestHistoryStore : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void loadsNewestFirst();
    void changesBeforeLoadingWait();
    void changesSurviveAnEarlyEnd();
    void adds();
    void renames_data();
    void renames();
    void logsWhatWasDone();
    void transcribedAnew();
    void removesRecordButNotAudio();
    void unknownIdChangesNothing();
    void idUnlikeFileName();
    void failedWriteIsToldAndMended();
    void seesWhatOthersDo();
    void followsAFolderMadeAnew();
    void pendingChangeWins();
    void twoProgramsAtOneRecordAgree();
    void fileRecord_data();
    void fileRecord();
    void fileWithoutText();

private:
    [[nodiscard]] std::unique_ptr<HistoryStore> openStore() const;
    void put(const TranscriptRecord &record) const;
    [[nodiscard]] TranscriptRecord onDisk(const QUuid &id) const;
    [[nodiscard]] QStringList files() const
    {
        return QDir(m_folders.history()).entryList(QDir::Files, QDir::Name);
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    StandardFolders m_folders;
};

void TestHistoryStore::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_folders = Samples::foldersIn(m_folder->path());
}

std::unique_ptr<HistoryStore> TestHistoryStore::openStore() const
{
    auto store = std::make_unique<HistoryStore>(m_folders);
    QCoro::waitFor(store->whenLoaded());
    return store;
}

TranscriptRecord TestHistoryStore::onDisk(const QUuid &id) const
{
    return Samples::onDisk(m_folders, id).value_or(TranscriptRecord());
}

void TestHistoryStore::put(const TranscriptRecord &record) const
{
    Samples::put(Samples::pathOf(m_folders, record.id), record.json());
}

void TestHistoryStore::loadsNewestFirst()
{
    for (const int minute : {3, 1, 2})
        put(plainRecord(QString::number(minute), minute));
    HistoryStore store(m_folders);
    QSignalSpy published(&store, &HistoryStore::recordsChanged);
    QVERIFY(!store.isLoaded());
    QVERIFY(store.records().isEmpty());
    QCoro::waitFor(store.whenLoaded());
    QVERIFY(store.isLoaded());
    QCOMPARE(published.size(), 1);
    QCOMPARE(titles(store), QStringList({u"3"_s, u"2"_s, u"1"_s}));
}

void TestHistoryStore::changesBeforeLoadingWait()
{
    const TranscriptRecord old = plainRecord(u"old"_s);
    put(old);
    HistoryStore store(m_folders);
    const TranscriptRecord added = store.add(plainRecord(u"added"_s, -5));
    store.rename(old.id, u"renamed"_s);
    store.rename(added.id, u"added, renamed"_s);
    QVERIFY(store.records().isEmpty());
    QCoro::waitFor(store.flush());
    QCOMPARE(titles(store), QStringList({u"added, renamed"_s, u"renamed"_s}));
    QCOMPARE(onDisk(old.id).title, u"renamed"_s);
    QCOMPARE(onDisk(added.id).title, u"added, renamed"_s);
}

void TestHistoryStore::changesSurviveAnEarlyEnd()
{
    const TranscriptRecord old = plainRecord(u"old"_s);
    put(old);
    QUuid added;
    {
        HistoryStore store(m_folders);
        added = store.add(plainRecord(u"added"_s)).id;
        store.rename(old.id, u"renamed"_s);
    }
    QCOMPARE(onDisk(added).title, u"added"_s);
    QCOMPARE(onDisk(old.id).title, u"renamed"_s);
    {
        const auto store = openStore();
        for (int i = 0; i < 20; ++i)
            store->rename(old.id, QString::number(i));
    }
    QCOMPARE(onDisk(old.id).title, u"19"_s);
    QCoreApplication::processEvents(); // what the writes of the dead stores have posted
}

void TestHistoryStore::adds()
{
    const auto store = openStore();
    TranscriptRecord record = Samples::fullRecord();
    const TranscriptRecord stored = store->add(record);
    QCOMPARE(eventsOf(stored).size(), 2);
    QCOMPARE(eventsOf(stored).first().id, eventsOf(record).first().id);
    const RecordEvent event = eventsOf(stored).last();
    QVERIFY(event.kind == RecordEvent::Kind::Transcription);
    QCOMPARE(event.text, record.text);
    QVERIFY(!event.prompt);
    QVERIFY(qAbs(event.ts.secsTo(QDateTime::currentDateTimeUtc())) < 60);
    QVERIFY(store->records().first() == stored);

    const TranscriptRecord empty = store->add(plainRecord(QString(), -1000));
    QVERIFY(!empty.events);
    QCOMPARE(store->records().first().id, empty.id);

    QCoro::waitFor(store->flush());
    const QString path = Samples::pathOf(m_folders, stored.id);
    QVERIFY(path.endsWith(u"/History/0A1B2C3D-4E5F-4607-8899-AABBCCDDEEFF.json"_s));
    QVERIFY(Samples::contentOf(path).contains("\"createdAt\": \"2025-03-03T14:05:09Z\""));
    QCOMPARE(QFile::permissions(path), QFileDevice::Permissions(0x6600));
    QCOMPARE(QFile::permissions(m_folders.history()), QFileDevice::Permissions(0x7700));
    QCOMPARE(files().size(), 2);
}

void TestHistoryStore::renames_data()
{
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("expected");
    QTest::newRow("other") << u"new"_s << u"new"_s;
    QTest::newRow("trimmed") << u" \n new  name\t"_s << u"new  name"_s;
    QTest::newRow("blank") << u" \n "_s << u"old"_s;
}

void TestHistoryStore::renames()
{
    QFETCH(const QString, title);
    QFETCH(const QString, expected);
    const TranscriptRecord record = plainRecord(u"old"_s);
    Samples::put(Samples::pathOf(m_folders, record.id), record.json() + "\n\n");
    const auto store = openStore();
    store->rename(record.id, title);
    QCoro::waitFor(store->flush());
    QCOMPARE(titles(*store), QStringList(expected));
    QCOMPARE(onDisk(record.id).title, expected);
    QCOMPARE(Samples::contentOf(Samples::pathOf(m_folders, record.id)).endsWith("\n\n"),
             expected == u"old"_s);
}

void TestHistoryStore::logsWhatWasDone()
{
    using Kind = RecordEvent::Kind;
    const auto store = openStore();
    const QUuid id = store->add(plainRecord(u"text"_s)).id;
    store->setCorrected(id, u"Text."_s);
    store->setSummary(id, u"Summary"_s);
    store->appendEvent(id, Kind::Prompt, u"Question?"_s, u"Answer"_s);
    QCoro::waitFor(store->flush());

    const TranscriptRecord record = onDisk(id);
    QCOMPARE(record.corrected, u"Text."_s);
    QCOMPARE(record.summary, u"Summary"_s);
    QCOMPARE(record.text, u"text"_s);
    const QList<std::tuple<Kind, QString, std::optional<QString>>> expected = {
        {Kind::Transcription, u"text"_s, {}},
        {Kind::Correction, u"Text."_s, {}},
        {Kind::Summary, u"Summary"_s, {}},
        {Kind::Prompt, u"Answer"_s, u"Question?"_s}};
    QCOMPARE(eventsOf(record).size(), expected.size());
    QSet<QUuid> ids;
    for (qsizetype i = 0; i < expected.size(); ++i) {
        const RecordEvent event = eventsOf(record).at(i);
        QVERIFY(std::tuple(event.kind, event.text, event.prompt) == expected.at(i));
        ids.insert(event.id);
    }
    QCOMPARE(ids.size(), expected.size());
}

void TestHistoryStore::transcribedAnew()
{
    const auto store = openStore();
    const QUuid id = store->add(Samples::fullRecord()).id;
    store->updateTranscription(id, {{.start = 0, .end = 9100, .text = u"Other."_s, .speaker = {}}},
                               u"Other."_s, u"small"_s, u"en"_s);
    const TranscriptRecord record = recordIn(*store, id);
    QVERIFY(!record.corrected && !record.summary);
    QCOMPARE(record.durationMs, 9100);
    QCOMPARE(record.modelID + record.languageCode + record.text, u"smallenOther."_s);
    QCOMPARE(eventsOf(record).size(), 3);
    QCOMPARE(eventsOf(record).last().text, u"Other."_s);

    store->setSummary(id, u"again"_s);
    store->updateTranscription(id, {}, QString(), u"tiny"_s, u"en"_s);
    QCoro::waitFor(store->flush());
    const TranscriptRecord silent = onDisk(id);
    QVERIFY(!silent.summary && silent.segments.isEmpty());
    QCOMPARE(silent.durationMs, 9100);
    QCOMPARE(eventsOf(silent).size(), 5);
}

void TestHistoryStore::removesRecordButNotAudio()
{
    const TranscriptRecord meeting = Samples::fullRecord();
    const QString audio = m_folders.recordings() + u'/' + meeting.audioFileName.value_or(QString());
    Samples::put(audio, "RIFF");
    put(meeting);
    Samples::put(m_folders.history() + u"/copy.json"_s, meeting.json());
    const auto store = openStore();
    QCOMPARE(store->records().size(), 2);
    store->remove(meeting.id);
    QVERIFY(store->records().isEmpty());
    QCoro::waitFor(store->flush());
    QCOMPARE(files(), QStringList(u"copy.json"_s));
    QCOMPARE(Samples::contentOf(audio), "RIFF");
    QCOMPARE(store->lastError(), QString());
}

void TestHistoryStore::unknownIdChangesNothing()
{
    put(plainRecord(u"a"_s));
    const auto store = openStore();
    const QList<TranscriptRecord> before = store->records();
    QSignalSpy changed(store.get(), &HistoryStore::recordsChanged);
    const QUuid unknown = QUuid::createUuid();
    store->rename(unknown, u"x"_s);
    store->setCorrected(unknown, u"x"_s);
    store->setSummary(unknown, u"x"_s);
    store->appendEvent(unknown, RecordEvent::Kind::Prompt, u"x"_s, u"x"_s);
    store->updateTranscription(unknown, {}, u"x"_s, u"x"_s, u"x"_s);
    store->remove(unknown);
    QCoro::waitFor(store->flush());
    QVERIFY(!store->record(unknown));
    QVERIFY(store->records() == before);
    QVERIFY(changed.isEmpty());
    QCOMPARE(files().size(), 1);
}

void TestHistoryStore::idUnlikeFileName()
{
    const TranscriptRecord record = plainRecord(u"a"_s);
    Samples::put(m_folders.history() + u"/from elsewhere.json"_s, record.json());
    Samples::put(m_folders.history() + u"/other.JSON"_s, plainRecord(u"b"_s).json());
    {
        const auto store = openStore();
        store->watch();
        store->rename(record.id, u"renamed"_s);
        QCoro::waitFor(store->flush());
        QCOMPARE(titles(*store), QStringList(u"renamed"_s));
    }
    QCOMPARE(onDisk(record.id).title, u"renamed"_s);
    QCOMPARE(Samples::contentOf(m_folders.history() + u"/from elsewhere.json"_s), record.json());
    const auto store = openStore();
    QStringList both = titles(*store);
    both.sort();
    QCOMPARE(both, QStringList({u"a"_s, u"renamed"_s}));
    QCoreApplication::processEvents();
}

void TestHistoryStore::failedWriteIsToldAndMended()
{
    const TranscriptRecord record = plainRecord(u"a"_s);
    const QString path = Samples::pathOf(m_folders, record.id);
    Samples::put(path + u"/in the way"_s, "x");
    const auto store = openStore();
    QSignalSpy told(store.get(), &HistoryStore::lastErrorChanged);
    store->add(record);
    store->add(plainRecord(u"b"_s));
    QCoro::waitFor(store->flush());
    QVERIFY2(store->lastError().startsWith(u"Не удалось сохранить запись: "_s),
             qPrintable(store->lastError()));
    QCOMPARE(titles(*store), QStringList({u"b"_s, u"a"_s}));
    QCOMPARE(failureOf(store->whenSaved(record.id)), store->lastError());
    QCOMPARE(failureOf(store->whenSaved(store->records().first().id)), QString());

    QVERIFY(QDir(path).removeRecursively());
    store->rename(record.id, u"c"_s);
    QCoro::waitFor(store->flush());
    QCOMPARE(store->lastError(), QString());
    QCOMPARE(told.size(), 2);
    QCOMPARE(onDisk(record.id).title, u"c"_s);

    QVERIFY(QFile::remove(path));
    Samples::put(path + u"/in the way"_s, "x");
    store->remove(record.id);
    QCoro::waitFor(store->flush());
    QVERIFY2(store->lastError().startsWith(u"Не удалось удалить запись: "_s), qPrintable(store->lastError()));
}

void TestHistoryStore::seesWhatOthersDo()
{
    const auto resident = openStore();
    resident->watch();
    const QUuid own = resident->add(plainRecord(u"own"_s, 10)).id;
    QCoro::waitFor(resident->flush());

    const auto other = openStore();
    other->add(plainRecord(u"older"_s, 5));
    const QUuid newer = other->add(plainRecord(u"newer"_s, 15)).id;
    QTRY_COMPARE(titles(*resident), QStringList({u"newer"_s, u"own"_s, u"older"_s}));
    other->rename(own, u"renamed there"_s);
    QTRY_COMPARE(titles(*resident), QStringList({u"newer"_s, u"renamed there"_s, u"older"_s}));
    other->remove(newer);
    QTRY_COMPARE(titles(*resident), QStringList({u"renamed there"_s, u"older"_s}));
    other->remove(own);
    QTRY_COMPARE(titles(*resident), QStringList(u"older"_s));
}

void TestHistoryStore::followsAFolderMadeAnew()
{
    const auto resident = openStore();
    resident->watch();
    const QUuid id = resident->add(plainRecord(u"kept here"_s)).id;
    QCoro::waitFor(resident->flush());
    QVERIFY(QDir(m_folders.history()).removeRecursively());
    QTest::qWait(1); // the watcher hears of it
    resident->rename(id, u"written again"_s);
    QCoro::waitFor(resident->flush());
    QCOMPARE(onDisk(id).title, u"written again"_s);
    QCOMPARE(QFile::permissions(m_folders.history()), QFileDevice::Permissions(0x7700));

    put(plainRecord(u"from elsewhere"_s, 1));
    QTRY_COMPARE(titles(*resident), QStringList({u"from elsewhere"_s, u"written again"_s}));
}

// The folder is large, so that looking through it takes long enough for others to write meanwhile.
void TestHistoryStore::pendingChangeWins()
{
    for (int i = 0; i < 1500; ++i)
        put(plainRecord(u"filler"_s));
    TranscriptRecord theirs = plainRecord(u"theirs"_s);
    put(theirs);
    const auto store = openStore();
    store->watch();
    HistoryFolder other(m_folders);
    for (int i = 0; i < 150; ++i) {
        const QString ours = u"ours %1"_s.arg(i);
        other.save(theirs);
        store->rename(theirs.id, ours);
        QTest::qWait(2);
        QCOMPARE(recordIn(*store, theirs.id).title, ours);
    }
    QCoro::waitFor(store->flush());
    QCOMPARE(onDisk(theirs.id).title, u"ours 149"_s);
}

void TestHistoryStore::twoProgramsAtOneRecordAgree()
{
    const TranscriptRecord record = plainRecord(u"start"_s);
    put(record);
    const auto one = openStore();
    const auto two = openStore();
    one->watch();
    two->watch();
    for (int i = 0; i < 40; ++i) {
        one->rename(record.id, u"one %1"_s.arg(i));
        if (i % 3 == 0)
            two->setSummary(record.id, QString(qsizetype{i} * 1000, u'2'));
        QTest::qWait(i % 7);
        QVERIFY(Samples::onDisk(m_folders, record.id));
    }
    QCoro::waitFor(one->flush());
    QCoro::waitFor(two->flush());
    QTRY_VERIFY(recordIn(*one, record.id).json() == recordIn(*two, record.id).json() &&
                recordIn(*one, record.id).json() == onDisk(record.id).json());
    QCOMPARE(one->lastError() + two->lastError(), QString());
    QCOMPARE(files().size(), 1);
}

void TestHistoryStore::fileRecord_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("title");
    QTest::newRow("plain") << u"/media/interview.wav"_s << u"interview"_s;
    QTest::newRow("several dots") << u"/media/a.b 2.tar.gz"_s << u"a.b 2.tar"_s;
    QTest::newRow("no extension") << u"/media.d/запись"_s << u"запись"_s;
    QTest::newRow("all extension") << u"/media/.wav"_s << u".wav"_s;
    QTest::newRow("relative") << u"sub/../x.mp3"_s << u"x"_s;
}

void TestHistoryStore::fileRecord()
{
    QFETCH(const QString, path);
    const auto store = openStore();
    const QList<DisplaySegment> segments = {{.start = 0, .end = 10, .text = u" a"_s, .speaker = 2},
                                            {.start = 10, .end = 25, .text = u" b"_s, .speaker = {}}};
    const auto id = FileRecordSaver(*store).save({path, segments, u" a b"_s, u"base"_s, u"auto"_s});
    const TranscriptRecord record = recordIn(*store, id.value_or(QUuid()));
    QVERIFY(record.kind == TranscriptKind::File);
    QTEST(record.title, "title");
    QCOMPARE(record.sourceFilePath, QFileInfo(path).absoluteFilePath());
    QVERIFY(QDir::isAbsolutePath(record.sourceFilePath.value_or(QString())));
    QCOMPARE(record.durationMs, 25);
    QVERIFY(record.segments == TranscriptRecord::segmentsFrom(segments));
    QCOMPARE(record.text, u" a b"_s);
    QCOMPARE(record.modelID + record.languageCode, u"baseauto"_s);
    QVERIFY(qAbs(record.createdAt.secsTo(QDateTime::currentDateTimeUtc())) < 60);
    QVERIFY(!record.audioFileName && !record.corrected && !record.summary);

    const auto withoutSegments = FileRecordSaver(*store).save({path, {}, u"a"_s, u"base"_s, u"auto"_s});
    QCOMPARE(recordIn(*store, withoutSegments.value_or(QUuid())).durationMs, 0);
}

void TestHistoryStore::fileWithoutText()
{
    const auto store = openStore();
    QVERIFY(!FileRecordSaver(*store).save({u"/a.wav"_s, {}, u" \n"_s, u"base"_s, u"ru"_s}));
    QVERIFY(store->records().isEmpty());
}

QTEST_GUILESS_MAIN(TestHistoryStore)
#include "tst_historystore.moc"
