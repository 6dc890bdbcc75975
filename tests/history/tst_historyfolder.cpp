#include "history/HistoryFolder.h"

#include "base/Async.h"
#include "history/HistoryStore.h"
#include "tests/history/Samples.h"
#include "tests/history/WithoutPrivileges.h"

#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>
#include <thread>

using namespace Qt::StringLiterals;
using namespace orvane;
using Samples::plainRecord;

namespace {

constexpr int writersPerProcess = 5;
constexpr int savesPerWriter = 40;

/// The same number in every part of it, and long enough to be written in several pieces.
TranscriptRecord numbered(const QUuid &id, int number)
{
    TranscriptRecord record = plainRecord(QString::number(number));
    record.id = id;
    record.durationMs = number;
    record.text = QString::number(number).repeated(1 + number % 5 * 40'000);
    return record;
}

// The test starts itself with these to be another process at the same folder.
namespace Child {

// Says each number once its record is saved; runs until it is killed.
int saveForever(HistoryFolder &history, const QUuid &id)
{
    for (int number = 1;; ++number) {
        history.save(numbered(id, number));
        std::printf("%d\n", number);
        std::fflush(stdout);
    }
}

int saveInThreads(const StandardFolders &folders, const QUuid &shared)
{
    std::vector<std::jthread> writers;
    writers.reserve(writersPerProcess);
    for (int writer = 0; writer < writersPerProcess; ++writer) {
        writers.emplace_back([folders, shared] {
            HistoryFolder history(folders);
            const QUuid own = QUuid::createUuid();
            for (int number = 1; number <= savesPerWriter; ++number) {
                history.save(numbered(shared, number));
                history.save(numbered(own, number));
            }
        });
    }
    return 0;
}

// Exit code 0 when the program tells of what it could not store, goes on, and stores it later.
int saveToFullDisk(const StandardFolders &folders, const QUuid &id)
{
    const QByteArray before = Samples::contentOf(Samples::pathOf(folders, id));
    HistoryStore store(folders);
    QCoro::waitFor(store.whenLoaded());

    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit little{.rlim_cur = 5000, .rlim_max = RLIM_INFINITY};
    setrlimit(RLIMIT_FSIZE, &little);
    store.setSummary(id, QString(100'000, u'x'));
    QCoro::waitFor(store.flush());
    if (!store.lastError().startsWith(u"Не удалось сохранить запись: "_s))
        return 1;
    if (Samples::contentOf(Samples::pathOf(folders, id)) != before || before.isEmpty())
        return 2;
    if (QDir(folders.history()).entryList(QDir::Files | QDir::Hidden).size() != 1)
        return 3;

    const rlimit none{.rlim_cur = RLIM_INFINITY, .rlim_max = RLIM_INFINITY};
    setrlimit(RLIMIT_FSIZE, &none);
    store.rename(id, u"after"_s);
    QCoro::waitFor(store.flush());
    const auto stored = Samples::onDisk(folders, id);
    return store.lastError().isEmpty() && stored && stored->summary && stored->title == u"after"_s ? 0 : 4;
}

int run(const QStringList &arguments)
{
    const StandardFolders folders = Samples::foldersIn(arguments[2]);
    const QUuid id = QUuid::fromString(arguments[3]);
    if (arguments[1] == u"--save-forever"_s) {
        HistoryFolder history(folders);
        return saveForever(history, id);
    }
    return arguments[1] == u"--save-in-threads"_s ? saveInThreads(folders, id) : saveToFullDisk(folders, id);
}

} // namespace Child

} // namespace

class TestHistoryFolder : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void loadsManyInOrder();
    void passesOverWhatIsNoRecord();
    void tightensPermissions();
    void unreadableFolder();
    void rescanTellsWhatChanged();
    void rescanTellsOfDoubles();
    void killedWhileSaving();
    void manyWritersInTwoProcesses();
    void fullDisk();

private:
    [[nodiscard]] std::unique_ptr<QProcess> startChild(const QString &what, const QUuid &id) const;
    [[nodiscard]] QString path(const QString &name) const { return m_folders.history() + u'/' + name; }

    std::unique_ptr<QTemporaryDir> m_folder;
    StandardFolders m_folders;
};

void TestHistoryFolder::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_folders = Samples::foldersIn(m_folder->path());
}

std::unique_ptr<QProcess> TestHistoryFolder::startChild(const QString &what, const QUuid &id) const
{
    auto child = std::make_unique<QProcess>();
    child->setProcessChannelMode(QProcess::ForwardedErrorChannel);
    child->start(QCoreApplication::applicationFilePath(), {what, m_folder->path(), uuidText(id)});
    return child;
}

// Enough of them that several threads take part.
void TestHistoryFolder::loadsManyInOrder()
{
    QStringList expected;
    for (int i = 0; i < 1000; ++i) {
        const QString name = u"%1"_s.arg(i, 4, 10, QChar(u'0'));
        Samples::put(path(name + u".json"_s), plainRecord(name, -(i / 10)).json());
        expected.append(name); // of equal times, by name
    }
    QStringList loaded;
    for (const TranscriptRecord &record : HistoryFolder(m_folders).load())
        loaded.append(record.title);
    QCOMPARE(loaded, expected);
}

void TestHistoryFolder::passesOverWhatIsNoRecord()
{
    const QByteArray json = plainRecord(u"a"_s).json();
    const QHash<QString, QByteArray> others = {{u"half.json"_s, json.chopped(30)},
                                               {u"empty.json"_s, {}},
                                               {u"a.JSON"_s, json},
                                               {u"a.json.bak"_s, json},
                                               {u"json"_s, json},
                                               {u".json"_s, json},
                                               {u"folder.json/a.json"_s, json}};
    for (const auto &[name, content] : others.asKeyValueRange())
        Samples::put(path(name), content);
    QCOMPARE(mkfifo(qPrintable(path(u"pipe.json"_s)), 0600), 0);
    QVERIFY(QFile::link(u"nowhere"_s, path(u"link.json"_s)));
    Samples::put(path(u"a.json"_s), json);

    HistoryFolder history(m_folders);
    history.prepare();
    QCOMPARE(history.load().size(), 1);
    QVERIFY(history.rescan().isEmpty());
    for (const auto &[name, content] : others.asKeyValueRange())
        QCOMPARE(Samples::contentOf(path(name)), content);
}

void TestHistoryFolder::tightensPermissions()
{
    const QString recording = m_folders.recordings() + u"/a.wav"_s;
    const QString record = path(u"a.json"_s);
    const QFileDevice::Permissions open(0x7777);
    for (const QString &file : {recording, record, path(u"other"_s)}) {
        Samples::put(file, "x");
        QVERIFY(QFile::setPermissions(file, open) && QFile::setPermissions(QFileInfo(file).path(), open));
    }
    HistoryFolder(m_folders).prepare();
    for (const QString &file : {recording, record, path(u"other"_s)}) {
        QCOMPARE(QFile::permissions(file), QFileDevice::Permissions(0x6600));
        QCOMPARE(QFile::permissions(QFileInfo(file).path()), QFileDevice::Permissions(0x7700));
    }
}

void TestHistoryFolder::unreadableFolder()
{
    Samples::put(m_folders.orvane() + u"/History"_s, "a file in the way");
    HistoryFolder history(m_folders);
    history.prepare();
    QVERIFY(history.load().isEmpty());
    QVERIFY(history.rescan().isEmpty());
    QVERIFY_THROWS_EXCEPTION(HistoryFolder::FolderError, history.save(plainRecord(u"a"_s)));
    QCOMPARE(Samples::contentOf(m_folders.history()), "a file in the way");

    init();
    const TranscriptRecord record = plainRecord(u"a"_s);
    HistoryFolder closed(m_folders);
    closed.save(record);
    QVERIFY(QFile::setPermissions(m_folders.history(), QFileDevice::ReadOwner | QFileDevice::ExeOwner));
    {
        const WithoutPrivileges asUser;
        QVERIFY_THROWS_EXCEPTION(HistoryFolder::FolderError, closed.save(record));
        QVERIFY_THROWS_EXCEPTION(HistoryFolder::FolderError, closed.remove(record.id));
        QCOMPARE(closed.load().size(), 1);
    }
}

void TestHistoryFolder::rescanTellsWhatChanged()
{
    HistoryFolder history(m_folders);
    history.prepare();
    QVERIFY(history.load().isEmpty());
    TranscriptRecord own = plainRecord(u"own"_s);
    history.save(own);
    QVERIFY(history.rescan().isEmpty());

    HistoryFolder other(m_folders);
    const TranscriptRecord theirs = plainRecord(u"theirs"_s);
    other.save(theirs);
    own.title = u"NWO"_s; // of the same size, perhaps within the clock's resolution
    other.save(own);
    const auto changes = history.rescan();
    QCOMPARE(changes.size(), 2);
    QVERIFY(changes.value(theirs.id) == QList({theirs}));
    QVERIFY(changes.value(own.id) == QList({own}));
    QVERIFY(history.rescan().isEmpty());

    other.remove(theirs.id);
    Samples::put(Samples::pathOf(m_folders, own.id), "damaged");
    const auto gone = history.rescan();
    QCOMPARE(gone.size(), 2);
    QVERIFY(gone.value(theirs.id).isEmpty() && gone.value(own.id).isEmpty());
    history.remove(theirs.id);
    QVERIFY(history.rescan().isEmpty());
}

void TestHistoryFolder::rescanTellsOfDoubles()
{
    const TranscriptRecord record = plainRecord(u"a"_s);
    Samples::put(path(u"copy.json"_s), record.json());
    HistoryFolder history(m_folders);
    QCOMPARE(history.load().size(), 1);
    HistoryFolder(m_folders).save(record);
    QCOMPARE(history.rescan().value(record.id).size(), 2);
    QVERIFY(QFile::remove(path(u"copy.json"_s)));
    QCOMPARE(history.rescan().value(record.id).size(), 1);
}

void TestHistoryFolder::killedWhileSaving()
{
    const TranscriptRecord untouched = Samples::fullRecord();
    HistoryFolder(m_folders).save(untouched);
    const QUuid id = QUuid::createUuid();
    for (int round = 0; round < 25; ++round) {
        const auto child = startChild(u"--save-forever"_s, id);
        int saved = 0;
        while (saved < 1 + round && child->waitForReadyRead(30'000))
            saved = child->readAllStandardOutput().trimmed().split('\n').last().toInt();
        std::this_thread::sleep_for(std::chrono::microseconds(round * 150));
        child->kill();
        QVERIFY(child->waitForFinished());
        QCOMPARE(child->exitStatus(), QProcess::CrashExit);

        const auto last = Samples::onDisk(m_folders, id);
        const int number = last ? static_cast<int>(last->durationMs) : -1;
        QVERIFY2(number >= saved, "a saved record is lost");
        QVERIFY(last == numbered(id, number));
        QCOMPARE(QFile::permissions(Samples::pathOf(m_folders, id)), QFileDevice::Permissions(0x6600));
        QCOMPARE(HistoryFolder(m_folders).load().size(), 2);
    }
    QVERIFY(Samples::onDisk(m_folders, untouched.id) == untouched);
}

void TestHistoryFolder::manyWritersInTwoProcesses()
{
    const QUuid shared = QUuid::createUuid();
    const auto one = startChild(u"--save-in-threads"_s, shared);
    const auto two = startChild(u"--save-in-threads"_s, shared);
    HistoryFolder reader(m_folders);
    while (one->state() != QProcess::NotRunning || two->state() != QProcess::NotRunning) {
        for (const TranscriptRecord &record : reader.load())
            QVERIFY(record == numbered(record.id, static_cast<int>(record.durationMs)));
        one->waitForFinished(1);
        two->waitForFinished(1);
    }
    QCOMPARE(one->exitCode() + two->exitCode(), 0);

    const QList<TranscriptRecord> records = reader.load();
    QCOMPARE(records.size(), 2 * writersPerProcess + 1);
    for (const TranscriptRecord &record : records) {
        QVERIFY(record == numbered(record.id, static_cast<int>(record.durationMs)));
        if (record.id != shared)
            QCOMPARE(record.durationMs, savesPerWriter);
    }
    QCOMPARE(QDir(m_folders.history()).entryList(QDir::Files | QDir::Hidden).size(), records.size());
}

void TestHistoryFolder::fullDisk()
{
    const TranscriptRecord record = Samples::fullRecord();
    HistoryFolder(m_folders).save(record);
    const auto child = startChild(u"--full-disk"_s, record.id);
    QVERIFY(child->waitForFinished(60'000));
    QCOMPARE(child->exitStatus(), QProcess::NormalExit);
    QCOMPARE(child->exitCode(), 0);
}

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    if (argc == 4)
        return Child::run(QCoreApplication::arguments());
    TestHistoryFolder test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_historyfolder.moc"
