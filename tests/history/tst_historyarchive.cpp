#include "history/HistoryArchive.h"

#include "base/Error.h"
#include "tests/history/Samples.h"
#include "tests/history/WithoutPrivileges.h"
#include "tests/support/FullDisk.h"
#include "tests/support/Rows.h"

#include <QProcess>
#include <QTemporaryDir>

#include <thread>

#include <sys/stat.h>

using namespace Qt::StringLiterals;
using namespace orvane;
using namespace orvane::test;
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
int saveForever(HistoryArchive &history, const QUuid &id)
{
    for (int number = 1;; ++number) {
        history.add(numbered(id, number));
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
            HistoryArchive history(folders);
            const QUuid own = QUuid::createUuid();
            for (int number = 1; number <= savesPerWriter; ++number) {
                history.add(numbered(shared, number));
                history.add(numbered(own, number));
            }
        });
    }
    return 0;
}

int run(const QStringList &arguments)
{
    const StandardFolders folders = Samples::foldersIn(arguments[2]);
    const QUuid id = QUuid::fromString(arguments[3]);
    if (arguments[1] == u"--save-forever"_s) {
        HistoryArchive history(folders);
        return saveForever(history, id);
    }
    return saveInThreads(folders, id);
}

} // namespace Child

} // namespace

class TestHistoryArchive : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        m_folders = Samples::foldersIn(m_folder->path());
        m_folders.caches = m_folder->filePath(u"caches"_s);
    }

    // Enough of them that several threads and several rounds take part.
    void listsManyInOrder()
    {
        QStringList expected;
        for (int i = 0; i < 1000; ++i) {
            const QString name = u"%1"_s.arg(i, 4, 10, QChar(u'0'));
            Samples::put(path(name + u".json"_s), plainRecord(name, -(i / 10)).json());
            expected.append(name); // of equal times, by name
        }
        QCOMPARE(listed(), expected);
        QCOMPARE(listed(), expected); // from the index
    }

    void passesOverWhatIsNoRecord()
    {
        const QByteArray json = plainRecord(u"a"_s).json();
        const QHash<QString, QByteArray> others = {{u"half.json"_s, json.chopped(30)},
                                                   {u"empty.json"_s, {}},
                                                   {u"a.JSON"_s, json},
                                                   {u".json"_s, json},
                                                   {u"folder.json/a.json"_s, json}};
        for (const auto &[name, content] : others.asKeyValueRange())
            Samples::put(path(name), content);
        QCOMPARE(mkfifo(qPrintable(path(u"pipe.json"_s)), 0600), 0);
        QVERIFY(QFile::link(u"nowhere"_s, path(u"link.json"_s)));
        Samples::put(path(u"a.json"_s), json);

        QCOMPARE(listed(), QStringList(u"a"_s));
        for (const auto &[name, content] : others.asKeyValueRange())
            QCOMPARE(Samples::contentOf(path(name)), content);
    }

    void tightensPermissions()
    {
        const QString recording = m_folders.recordings() + u"/a.wav"_s;
        const QString record = path(u"a.json"_s);
        const QFileDevice::Permissions open(0x7777);
        for (const QString &file : {recording, record}) {
            Samples::put(file, "x");
            QVERIFY(QFile::setPermissions(file, open) && QFile::setPermissions(QFileInfo(file).path(), open));
        }
        HistoryArchive history(m_folders);
        history.prepare();
        QVERIFY(history.list());
        for (const QString &file : {recording, record, m_folders.historyIndex()}) {
            QCOMPARE(QFile::permissions(file), QFileDevice::Permissions(0x6600));
            QCOMPARE(QFile::permissions(QFileInfo(file).path()), QFileDevice::Permissions(0x7700));
        }
    }

    void withoutPermission()
    {
        const TranscriptRecord record = plainRecord(u"a"_s);
        HistoryArchive history(m_folders);
        history.add(record);
        QVERIFY(QFile::setPermissions(m_folders.history(), QFileDevice::ReadOwner | QFileDevice::ExeOwner));
        {
            const WithoutPrivileges asUser;
            QVERIFY_THROWS_EXCEPTION(Error, history.add(record));
            QVERIFY_THROWS_EXCEPTION(Error, history.remove(record.id));
            QCOMPARE(history.list().value_or(HistoryArchive::Listing()).records.size(), 0); // counts as made
        }
        QVERIFY(QFile::setPermissions(m_folders.history(), QFileDevice::Permissions(0x7000)));
        history.retry(record.id);
        QVERIFY(!QFile::exists(Samples::pathOf(m_folders, record.id)));
    }

    void search_data()
    {
        const Rows<QString, QString> row("text", "found");
        row("nothing", u" "_s, u"12"_s);
        row("title", u"планёрка"_s, u"1"_s);
        row("text, inside a word", u"ОМЕТ"_s, u"2"_s);
        row("corrected text", u"привет!"_s, u"1"_s);
        row("protocol", u"Поздор"_s, u"1"_s);
        row("two words in two places", u"среда\tпока"_s, u"1"_s);
        row("two words of two records", u"среда километров"_s, {});
        row("not across texts", u"среда»привет"_s, {});
        row("one letter", u"Щ"_s, u"2"_s);
        row("one letter of all", u"о"_s, u"12"_s);
        row("two letters", u"щё"_s, u"2"_s);
        row("two letters at an end", u"ёщ"_s, u"2"_s);
        row("two letters nowhere", u"ъъ"_s, {});
        row("a quotation mark", u"\"так"_s, u"2"_s);
        row("beyond the first plane", u"🎙"_s, u"2"_s);
    }

    void search()
    {
        QFETCH(const QString, text);
        TranscriptRecord other = plainRecord(u"Ещё"_s);
        other.text = u"Сто километров, \"так сказать\" 🎙; и ещё одно ёщ"_s;
        HistoryArchive history(m_folders);
        history.add(Samples::fullRecord());
        history.add(other);
        const auto found = [&] {
            const QSet<QUuid> ids = history.search(text);
            return QString(ids.contains(Samples::fullRecord().id) ? u"1"_s : QString()) +
                   (ids.contains(other.id) ? u"2"_s : QString());
        };
        QTEST(found(), "found");
        while (history.prepareSearch()) {
        }
        QTEST(found(), "found");
    }

    void indexFollowsTheFiles()
    {
        const TranscriptRecord record = plainRecord(u"первое слово"_s);
        HistoryArchive history(m_folders);
        history.add(record);
        QCOMPARE(history.search(u"первое"_s).size(), 1);
        while (history.prepareSearch()) {
        }
        HistoryArchive other(m_folders);
        other.edit(record.id, [](TranscriptRecord &edited) { edited.title = edited.text = u"второе"_s; });
        QVERIFY(history.list());
        QCOMPARE(history.search(u"первое"_s).size(), 0);
        QCOMPARE(history.search(u"второе"_s).size(), 1);
        QVERIFY(QFile::remove(Samples::pathOf(m_folders, record.id)));
        QVERIFY(history.list());
        QCOMPARE(history.search(u"второе"_s).size(), 0);
    }

    void indexForgetsWhatIsDeleted()
    {
        const QString word = u"ъщзфжэ"_s;
        TranscriptRecord record = plainRecord(u"a"_s);
        record.text = word;
        HistoryArchive history(m_folders);
        history.add(record);
        history.add(Samples::fullRecord());
        QVERIFY(history.list());
        while (history.prepareSearch()) {
        }
        const auto remains = [&] {
            QByteArray index;
            for (const QString &suffix : {QString(), u"-wal"_s})
                index += Samples::contentOf(m_folders.historyIndex() + suffix);
            bool found = false;
            for (qsizetype i = 0; i + 3 <= word.size(); ++i)
                found = found || index.contains(word.mid(i, 3).toUtf8());
            return found;
        };
        QVERIFY(remains());
        history.remove(record.id);
        while (history.eraseResidue()) {
        }
        QVERIFY(!remains());
        QCOMPARE(history.search(u"планёрка"_s).size(), 1);
    }

    void indexIsMadeAnew_data()
    {
        const Rows<bool, QByteArray> row("isOpen", "content");
        row("no index", false, "something else");
        row("damaged", false, QByteArray(100'000, 'x'));
        row("damaged while it is used", true, QByteArray(100'000, 'x'));
    }

    void indexIsMadeAnew()
    {
        QFETCH(const bool, isOpen);
        QFETCH(const QByteArray, content);
        Samples::put(path(u"a.json"_s), plainRecord(u"a"_s).json());
        HistoryArchive history(m_folders);
        if (isOpen)
            QVERIFY(history.list());
        Samples::put(m_folders.historyIndex(), content);
        Samples::put(path(u"b.json"_s), plainRecord(u"b"_s).json());
        const auto listing = history.list().value_or(HistoryArchive::Listing());
        QCOMPARE(listing.records.size(), 2);
        QCOMPARE(history.search(u"b"_s).size(), 1);
        QCOMPARE(listed().size(), 2);
    }

    void lockedIndexIsDoneWithout()
    {
        Samples::put(path(u"b.json"_s), plainRecord(u"b"_s, -1).json());
        QCOMPARE(listed(), QStringList(u"b"_s));
        SqliteDatabase another(m_folders.historyIndex());
        const SqliteTransaction busy(another);
        HistoryArchive history(m_folders);
        history.add(plainRecord(u"a"_s));
        QCOMPARE(listed(), QStringList({u"a"_s, u"b"_s}));
    }

    void killedWhileSaving()
    {
        const TranscriptRecord untouched = Samples::fullRecord();
        HistoryArchive(m_folders).add(untouched);
        const QUuid id = QUuid::createUuid();
        for (int round = 0; round < 12; ++round) {
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
            QCOMPARE(listed().size(), 2);
        }
        QVERIFY(Samples::onDisk(m_folders, untouched.id) == untouched);
    }

    void manyWritersInTwoProcesses()
    {
        const QUuid shared = QUuid::createUuid();
        const auto one = startChild(u"--save-in-threads"_s, shared);
        const auto two = startChild(u"--save-in-threads"_s, shared);
        HistoryArchive reader(m_folders);
        const auto areWhole = [&reader] {
            const HistoryArchive::Listing listing = reader.list().value_or(HistoryArchive::Listing());
            return std::ranges::all_of(listing.records, [&reader](const RecordSummary &summary) {
                const TranscriptRecord record = reader.read(summary.id);
                return record == numbered(record.id, static_cast<int>(record.durationMs));
            });
        };
        while (one->state() != QProcess::NotRunning || two->state() != QProcess::NotRunning) {
            QVERIFY(areWhole());
            one->waitForFinished(1);
            two->waitForFinished(1);
        }
        QCOMPARE(one->exitCode() + two->exitCode(), 0);
        QVERIFY(areWhole());
        QCOMPARE(listed().size(), 2 * writersPerProcess + 1);
        QCOMPARE(QDir(m_folders.history()).entryList(QDir::Files | QDir::Hidden).size(), listed().size());
    }

    void fullDisk()
    {
        TranscriptRecord record = Samples::fullRecord();
        HistoryArchive history(m_folders);
        history.add(record);
        {
            const auto full = limitFileSize(5000);
            QVERIFY_THROWS_EXCEPTION(Error, history.edit(record.id, [](TranscriptRecord &stored) {
                stored.summary = QString(100'000, u'x');
            }));
        }
        QVERIFY(Samples::onDisk(m_folders, record.id) == record);
        QCOMPARE(QDir(m_folders.history()).entryList(QDir::Files | QDir::Hidden).size(), 1);
        history.edit(record.id, [](TranscriptRecord &stored) { stored.title = u"after"_s; });
        QCOMPARE(Samples::onDisk(m_folders, record.id)->title,
                 u"after"_s); // what was not stored has not gone
        QCOMPARE(Samples::onDisk(m_folders, record.id)->summary->size(), 100'000);
    }

private:
    [[nodiscard]] std::unique_ptr<QProcess> startChild(const QString &what, const QUuid &id) const
    {
        auto child = std::make_unique<QProcess>();
        child->setProcessChannelMode(QProcess::ForwardedErrorChannel);
        child->start(QCoreApplication::applicationFilePath(), {what, m_folder->path(), uuidText(id)});
        return child;
    }

    [[nodiscard]] QString path(const QString &name) const { return m_folders.history() + u'/' + name; }

    [[nodiscard]] QStringList listed() const
    {
        QStringList titles;
        for (const RecordSummary &record :
             HistoryArchive(m_folders).list().value_or(HistoryArchive::Listing()).records)
            titles.append(record.title);
        return titles;
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    StandardFolders m_folders;
};

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    if (argc == 4)
        return Child::run(QCoreApplication::arguments());
    TestHistoryArchive test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_historyarchive.moc"
