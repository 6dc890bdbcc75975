#include "history/HistoryStore.h"

#include "history/FileRecordSaver.h"
#include "tests/history/Samples.h"
#include "tests/support/Rows.h"
#include "tests/support/TaskResult.h"

#include <QSignalSpy>
#include <QTemporaryDir>

#include <QCoroTask>

using namespace Qt::StringLiterals;
using namespace orvane;
using namespace orvane::test;
using Samples::plainRecord;

namespace {

QStringList titles(const HistoryStore &store)
{
    QStringList titles;
    for (const RecordSummary &record : store.records())
        titles.append(record.title);
    return titles;
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
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        m_folders = Samples::foldersIn(m_folder->path());
    }

    void loadsNewestFirst()
    {
        for (const int minute : {3, 1, 2})
            put(plainRecord(QString::number(minute), minute));
        HistoryStore store(m_folders);
        QSignalSpy published(&store, &HistoryStore::recordsChanged);
        QCoro::waitFor(store.flush()); // behind all that was begun
        QVERIFY(!store.isLoaded());
        QCoro::waitFor(store.whenLoaded());
        QVERIFY(store.isLoaded());
        QCOMPARE(published.size(), 1);
        QCOMPARE(titles(store), QStringList({u"3"_s, u"2"_s, u"1"_s}));
    }

    void changesNeedNoList()
    {
        const TranscriptRecord old = plainRecord(u"old"_s);
        put(old);
        HistoryStore store(m_folders);
        const TranscriptRecord added = store.add(plainRecord(u"added"_s, -5));
        store.rename(old.id, u"renamed"_s);
        store.rename(added.id, u"added, renamed"_s);
        QCOMPARE(QCoro::waitFor(store.record(old.id)).title, u"renamed"_s);
        QVERIFY(!store.isLoaded());
        QCOMPARE(onDisk(old.id).title, u"renamed"_s);
        QCOMPARE(onDisk(added.id).title, u"added, renamed"_s);
        QCoro::waitFor(store.whenLoaded());
        QCOMPARE(titles(store), QStringList({u"renamed"_s, u"added, renamed"_s}));
    }

    void changesSurviveAnEarlyEnd()
    {
        const TranscriptRecord old = plainRecord(u"old"_s);
        put(old);
        QUuid added;
        {
            HistoryStore store(m_folders);
            added = store.add(plainRecord(u"added"_s)).id;
            for (int i = 0; i < 20; ++i)
                store.rename(old.id, QString::number(i));
        }
        QCOMPARE(onDisk(added).title, u"added"_s);
        QCOMPARE(onDisk(old.id).title, u"19"_s);
        QCoreApplication::processEvents(); // what the writes of the dead store have posted
    }

    void adds()
    {
        const auto store = openStore();
        const TranscriptRecord record = Samples::fullRecord();
        const TranscriptRecord stored = store->add(record);
        QCOMPARE(eventsOf(stored).size(), 2);
        QCOMPARE(eventsOf(stored).first().id, eventsOf(record).first().id);
        const RecordEvent event = eventsOf(stored).last();
        QVERIFY(event.kind == RecordEvent::Kind::Transcription);
        QCOMPARE(event.text, record.text);
        QVERIFY(!event.prompt);
        QVERIFY(qAbs(event.ts.secsTo(QDateTime::currentDateTimeUtc())) < 60);
        const RecordSummary shown = store->records().first();
        QCOMPARE(shown.title + shown.beginning, record.title + record.text);
        QVERIFY(shown.isCorrected && shown.hasProtocol && shown.durationMs == record.durationMs);

        const TranscriptRecord empty = store->add(plainRecord(QString(), -1000));
        QVERIFY(!empty.events);
        QCOMPARE(store->records().first().id, empty.id);

        QCoro::waitFor(store->flush());
        const QString path = Samples::pathOf(m_folders, stored.id);
        QVERIFY(path.endsWith(u"/History/0A1B2C3D-4E5F-4607-8899-AABBCCDDEEFF.json"_s));
        QVERIFY(Samples::contentOf(path).contains("\"createdAt\": \"2025-03-03T14:05:09Z\""));
        QCOMPARE(QFile::permissions(path), QFileDevice::Permissions(0x6600));
        QCOMPARE(QFile::permissions(m_folders.history()), QFileDevice::Permissions(0x7700));
    }

    void renames()
    {
        const TranscriptRecord record = plainRecord(u"old"_s);
        put(record);
        const auto store = openStore();
        store->rename(record.id, u" \n "_s); // no name
        QCOMPARE(titles(*store), QStringList(u"old"_s));
        store->rename(record.id, u" \n new  name\t"_s);
        QCOMPARE(titles(*store), QStringList(u"new  name"_s));
        QCoro::waitFor(store->flush());
        QCOMPARE(onDisk(record.id).title, u"new  name"_s);
    }

    void logsWhatWasDone()
    {
        using Kind = RecordEvent::Kind;
        const auto store = openStore();
        const QUuid id = store->add(plainRecord(u"text"_s)).id;
        QSignalSpy changed(store.get(), &HistoryStore::recordChanged);
        store->setCorrected(id, u"Text."_s);
        store->setSummary(id, u"Summary"_s);
        store->appendEvent(id, Kind::Prompt, u"Question?"_s, u"Answer"_s);
        QCOMPARE(changed.size(), 3);
        QVERIFY(store->records().first().isCorrected && store->records().first().hasProtocol);
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

    void transcribedAnew()
    {
        const auto store = openStore();
        const QUuid id = store->add(Samples::fullRecord()).id;
        store->updateTranscription(id, {{.start = 0, .end = 9100, .text = u"Other."_s, .speaker = {}}},
                                   u"Other."_s, u"small"_s, u"en"_s);
        const RecordSummary shown = store->records().first();
        QVERIFY(!shown.isCorrected && !shown.hasProtocol);
        QCOMPARE(shown.durationMs, 9100);
        QCOMPARE(shown.beginning, u"Other."_s);
        const TranscriptRecord record = QCoro::waitFor(store->record(id));
        QVERIFY(!record.corrected && !record.summary);
        QCOMPARE(record.modelID + record.languageCode + record.text, u"smallenOther."_s);
        QCOMPARE(eventsOf(record).last().text, u"Other."_s);

        store->setSummary(id, u"again"_s);
        store->updateTranscription(id, {}, QString(), u"tiny"_s, u"en"_s);
        QCoro::waitFor(store->flush());
        const TranscriptRecord silent = onDisk(id);
        QVERIFY(!silent.summary && silent.segments.isEmpty());
        QCOMPARE(silent.durationMs, 9100);
        QCOMPARE(eventsOf(silent).size(), 5);
    }

    void removesEveryFileButNotTheAudio()
    {
        const TranscriptRecord meeting = Samples::fullRecord();
        const QString audio = m_folders.recordings() + u'/' + meeting.audioFileName.value_or(QString());
        Samples::put(audio, "RIFF");
        put(meeting);
        Samples::put(m_folders.history() + u"/copy.json"_s, meeting.json());
        const auto store = openStore();
        QCOMPARE(store->records().size(), 1);
        store->remove(meeting.id);
        QVERIFY(store->records().isEmpty());
        QCOMPARE(finished(store->whenSaved(meeting.id)).error(), QString());
        QCOMPARE(files(), QStringList());
        QCOMPARE(Samples::contentOf(audio), "RIFF");
    }

    void unknownIdChangesNothing()
    {
        put(plainRecord(u"a"_s));
        for (const bool isLoaded : {false, true}) {
            HistoryStore store(m_folders);
            if (isLoaded)
                QCoro::waitFor(store.whenLoaded());
            QSignalSpy changed(&store, &HistoryStore::recordsChanged);
            const QUuid unknown = QUuid::createUuid();
            store.rename(unknown, u"x"_s);
            store.updateTranscription(unknown, {}, u"x"_s, u"x"_s, u"x"_s);
            store.remove(unknown);
            QCOMPARE(finished(store.whenSaved(unknown)).error(), QString());
            QVERIFY(finished(store.record(unknown)).error().startsWith(u"В истории нет записи "_s));
            QVERIFY(changed.isEmpty());
            QCOMPARE(files().size(), 1);
        }
    }

    void ofTwoFilesTheOwnCounts()
    {
        const TranscriptRecord record = plainRecord(u"a"_s);
        Samples::put(m_folders.history() + u"/0 from elsewhere.json"_s, record.json());
        {
            const auto store = openStore();
            QCOMPARE(titles(*store), QStringList(u"a"_s));
            store->rename(record.id, u"renamed"_s);
            QCoro::waitFor(store->flush());
        }
        QCOMPARE(files().size(), 2);
        QCOMPARE(onDisk(record.id).title, u"renamed"_s);
        const auto store = openStore();
        QCOMPARE(titles(*store), QStringList(u"renamed"_s));
        QCOMPARE(QCoro::waitFor(store->record(record.id)).title, u"renamed"_s);
        QCoreApplication::processEvents();
    }

    void failedWriteIsMadeUpFor()
    {
        const TranscriptRecord record = plainRecord(u"a"_s);
        const QString path = Samples::pathOf(m_folders, record.id);
        Samples::put(path + u"/in the way"_s, "x");
        const auto store = openStore();
        QSignalSpy said(store.get(), &HistoryStore::lastErrorChanged);
        store->add(record);
        const QUuid other = store->add(plainRecord(u"b"_s)).id;
        store->rename(record.id, u"c"_s);
        QCOMPARE(finished(store->whenSaved(record.id)).error(), u"Не удалось сохранить запись: это папка"_s);
        QCOMPARE(store->lastError(), u"Не удалось сохранить запись: это папка"_s);
        QCOMPARE(finished(store->whenSaved(other)).error(), QString());
        QCoro::waitFor(store->refresh());
        QCOMPARE(titles(*store), QStringList({u"b"_s, u"c"_s}));
        QCOMPARE(QCoro::waitFor(store->record(record.id)).title, u"c"_s);

        QVERIFY(QDir(path).removeRecursively());
        store->rename(other, u"d"_s); // succeeds, and so the other is tried again
        QTRY_COMPARE(store->lastError(), QString());
        QCOMPARE(said.size(), 2);
        QCOMPARE(onDisk(record.id).title, u"c"_s);
        QCOMPARE(finished(store->whenSaved(record.id)).error(), QString());
    }

    void losesNothingOfWhatOthersDid()
    {
        const TranscriptRecord record = plainRecord(u"start"_s);
        put(record);
        const auto one = openStore(); // neither watches the folder
        const auto two = openStore();
        for (int i = 0; i < 30; ++i) {
            one->appendEvent(record.id, RecordEvent::Kind::Prompt, u"?"_s, u"one"_s);
            two->appendEvent(record.id, RecordEvent::Kind::Prompt, u"?"_s, u"two"_s);
            one->rename(record.id, u"one %1"_s.arg(i));
            two->setSummary(record.id, u"two %1"_s.arg(i));
        }
        QCoro::waitFor(one->flush());
        QCoro::waitFor(two->flush());
        const TranscriptRecord stored = onDisk(record.id);
        QCOMPARE(eventsOf(stored).size(), 90);
        QCOMPARE(stored.title, u"one 29"_s);
        QCOMPARE(stored.summary, u"two 29"_s);
        QCOMPARE(one->lastError() + two->lastError(), QString());
    }

    void seesWhatOthersDo()
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
        QSignalSpy changed(resident.get(), &HistoryStore::recordChanged);
        other->appendEvent(own, RecordEvent::Kind::Prompt, u"?"_s, u"!"_s);
        QTRY_COMPARE(changed.size(), 1);
        QCOMPARE(changed.first().first().toUuid(), own);
        other->remove(newer);
        other->remove(own);
        QTRY_COMPARE(titles(*resident), QStringList(u"older"_s));
    }

    void followsAFolderMadeAnew()
    {
        const auto resident = openStore();
        resident->watch();
        resident->add(plainRecord(u"kept here"_s));
        QCoro::waitFor(resident->flush());
        QVERIFY(QDir(m_folders.history()).removeRecursively());
        QCoreApplication::processEvents(); // the watcher hears of it
        resident->add(plainRecord(u"added"_s, 1));
        QCoro::waitFor(resident->flush());
        QCOMPARE(QFile::permissions(m_folders.history()), QFileDevice::Permissions(0x7700));
        put(plainRecord(u"from elsewhere"_s, 2));
        QTRY_COMPARE(titles(*resident), QStringList({u"from elsewhere"_s, u"added"_s}));
    }

    void tooLargeAFileIsPassedOver()
    {
        put(plainRecord(u"a"_s));
        QFile large(m_folders.history() + u"/large.json"_s);
        QVERIFY(large.open(QFile::WriteOnly) && large.resize(HistoryFolder::maxFileSize + 1));
        for (int start = 0; start < 2; ++start) {
            const auto store = openStore();
            QCOMPARE(titles(*store), QStringList(u"a"_s));
            QCOMPARE(store->lastError(), u"Файл истории слишком велик и пропущен: large.json"_s);
        }
    }

    void fileRecord_data()
    {
        const Rows<QString, QString> row("path", "title");
        row("several dots", u"/media/a.b 2.tar.gz"_s, u"a.b 2.tar"_s);
        row("all extension", u"/media/.wav"_s, u".wav"_s);
        row("relative", u"sub/../x.mp3"_s, u"x"_s);
    }

    void fileRecord()
    {
        QFETCH(const QString, path);
        HistoryStore store(m_folders);
        const QList<DisplaySegment> segments = {{.start = 0, .end = 10, .text = u" a"_s, .speaker = 2},
                                                {.start = 10, .end = 25, .text = u" b"_s, .speaker = {}}};
        const auto id = FileRecordSaver(store).save({.path = path,
                                                     .segments = segments,
                                                     .text = u" a b"_s,
                                                     .modelID = u"base"_s,
                                                     .languageCode = u"auto"_s});
        const TranscriptRecord record = QCoro::waitFor(store.record(id.value_or(QUuid())));
        QVERIFY(record.kind == TranscriptKind::File);
        QTEST(record.title, "title");
        QCOMPARE(record.sourceFilePath, QFileInfo(path).absoluteFilePath());
        QCOMPARE(record.durationMs, 25);
        QVERIFY(record.segments == TranscriptRecord::segmentsFrom(segments));
        QCOMPARE(record.text, u" a b"_s);
        QCOMPARE(record.modelID + record.languageCode, u"baseauto"_s);
        QVERIFY(qAbs(record.createdAt.secsTo(QDateTime::currentDateTimeUtc())) < 60);

        QVERIFY(!FileRecordSaver(store).save(
            {.path = path, .segments = segments, .text = u" \n"_s, .modelID = {}, .languageCode = {}}));
    }

private:
    [[nodiscard]] std::unique_ptr<HistoryStore> openStore() const
    {
        auto store = std::make_unique<HistoryStore>(m_folders);
        QCoro::waitFor(store->whenLoaded());
        return store;
    }

    void put(const TranscriptRecord &record) const
    {
        Samples::put(Samples::pathOf(m_folders, record.id), record.json());
    }

    [[nodiscard]] TranscriptRecord onDisk(const QUuid &id) const
    {
        return Samples::onDisk(m_folders, id).value_or(TranscriptRecord());
    }

    [[nodiscard]] QStringList files() const
    {
        return QDir(m_folders.history()).entryList(QDir::Files, QDir::Name);
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    StandardFolders m_folders;
};

QTEST_GUILESS_MAIN(TestHistoryStore)
#include "tst_historystore.moc"
