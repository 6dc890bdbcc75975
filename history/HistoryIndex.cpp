#include "history/HistoryIndex.h"

#include "base/files/PrivateFile.h"
#include "history/HistorySearch.h"

#include <QFile>
#include <QFileInfo>

#include <new>
#include <utility>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

constexpr auto inMemory = ":memory:"_L1;

/// To be raised with every change of the tables or of what they hold.
constexpr qint64 version = 2;
constexpr auto setVersion = "PRAGMA user_version = 2";

// Not flushed: after a power loss the index may be the old one or damaged, and is made up for.
constexpr auto settings = "PRAGMA journal_mode = WAL;"
                          "PRAGMA synchronous = NORMAL;"
                          "PRAGMA secure_delete = ON;"
                          "PRAGMA cache_size = -512;";

// The words stand apart, with the search, so that a list need not read over them.
constexpr auto tables =
    "CREATE TABLE file (number INTEGER PRIMARY KEY, name BLOB NOT NULL UNIQUE, size INTEGER NOT NULL,"
    " modified INTEGER NOT NULL, inode INTEGER NOT NULL, id BLOB, isOwn INTEGER, kind INTEGER, title TEXT,"
    " created INTEGER, duration INTEGER, isCorrected INTEGER, hasProtocol INTEGER, beginning TEXT,"
    " audio TEXT, letters TEXT, isPrepared INTEGER NOT NULL DEFAULT 0);"
    "CREATE INDEX fileOfRecord ON file (id);";

RecordSummary summaryOf(const SqliteDatabase::Statement &row)
{
    return {.id = QUuid::fromRfc4122(row.bytes(0)),
            .kind = static_cast<TranscriptKind>(row.integer(1)),
            .title = row.text(2),
            .createdAt = QDateTime::fromMSecsSinceEpoch(row.integer(3), Qt::UTC),
            .durationMs = row.integer(4),
            .isCorrected = row.integer(5) != 0,
            .hasProtocol = row.integer(6) != 0,
            .beginning = row.text(7),
            .fileChanged = row.integer(8)};
}

} // namespace

HistoryIndex::Entry::Entry(QByteArray name, const FileStamp &stamp,
                           const std::optional<TranscriptRecord> &record)
    : fileName(std::move(name)),
      stamp(stamp)
{
    if (!record)
        return;
    content = Content{.summary = RecordSummary::of(*record, stamp.modified),
                      .audioFileName = record->audioFileName.value_or(QString()),
                      .words = HistorySearch::wordsOf(*record)};
}

HistoryIndex::HistoryIndex(QString path) : m_path(path.isEmpty() ? QString(inMemory) : std::move(path)) {}

template <typename Work>
auto HistoryIndex::attempt(Work work)
{
    for (;;) {
        try {
            if (!m_database)
                open();
            return work();
        } catch (const SqliteDatabase::Failure &failure) {
            recover(failure);
        }
    }
}

void HistoryIndex::open()
{
    if (m_path != inMemory)
        makePrivateFolder(QFileInfo(m_path).path());
    m_database = std::make_unique<SqliteDatabase>(m_path);
    m_database->run(settings);
    if (presentVersion() != version)
        makeTables();
}

qint64 HistoryIndex::presentVersion()
{
    SqliteDatabase::Statement row = m_database->prepare("PRAGMA user_version");
    row.step();
    return row.integer(0);
}

void HistoryIndex::makeTables()
{
    SqliteTransaction transaction(*m_database);
    const qint64 found = presentVersion();
    if (found == version)
        return; // another process was faster
    if (found != 0)
        throw SqliteDatabase::Failure::unknownForm();
    m_database->run(tables);
    m_database->run(HistorySearch::tables);
    m_database->run(setVersion);
    transaction.commit();
}

void HistoryIndex::recover(const SqliteDatabase::Failure &failure)
{
    m_database.reset();
    ++m_generation;
    if (m_path == inMemory)
        throw std::bad_alloc();
    if (failure.isBusy() || std::exchange(m_wasMadeAnew, true)) {
        m_path = inMemory;
        return;
    }
    for (const QString &suffix : {QString(), u"-wal"_s, u"-shm"_s})
        QFile::remove(m_path + suffix);
}

QHash<QByteArray, FileStamp> HistoryIndex::files()
{
    return attempt([this] {
        QHash<QByteArray, FileStamp> files;
        SqliteDatabase::Statement row = m_database->prepare("SELECT name, size, modified, inode FROM file");
        while (row.step()) {
            files.insert(row.bytes(0), {.size = row.integer(1),
                                        .modified = row.integer(2),
                                        .inode = static_cast<quint64>(row.integer(3))});
        }
        return files;
    });
}

void HistoryIndex::put(const std::vector<Entry> &entries)
{
    attempt([this, &entries] {
        SqliteTransaction transaction(*m_database);
        for (const Entry &entry : entries) {
            removeFile(entry.fileName);
            insert(entry);
        }
        transaction.commit();
    });
}

void HistoryIndex::remove(const QList<QByteArray> &fileNames)
{
    if (fileNames.isEmpty())
        return;
    attempt([this, &fileNames] {
        SqliteTransaction transaction(*m_database);
        for (const QByteArray &fileName : fileNames)
            removeFile(fileName);
        HistorySearch(*m_database).noteResidue();
        transaction.commit();
    });
}

void HistoryIndex::removeFile(const QByteArray &fileName)
{
    SqliteDatabase::Statement file = m_database->prepare("SELECT number FROM file WHERE name = ?");
    file.bindBlob(1, fileName);
    if (!file.step())
        return;
    const qint64 number = file.integer(0);
    HistorySearch(*m_database).remove(number);
    m_database->prepare("DELETE FROM file WHERE number = ?").bind(1, number).run();
}

void HistoryIndex::insert(const Entry &entry)
{
    SqliteDatabase::Statement file = m_database->prepare(
        "INSERT INTO file (name, size, modified, inode, id, isOwn, kind, title, created, duration, "
        "isCorrected,"
        " hasProtocol, beginning, audio, letters) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)");
    file.bindBlob(1, entry.fileName)
        .bind(2, entry.stamp.size)
        .bind(3, entry.stamp.modified)
        .bind(4, static_cast<qint64>(entry.stamp.inode));
    if (entry.content) {
        const RecordSummary &summary = entry.content->summary;
        file.bindBlob(5, summary.id.toRfc4122())
            .bind(6, qint64{entry.fileName == recordFileName(summary.id)})
            .bind(7, static_cast<qint64>(summary.kind))
            .bind(8, summary.title.toUtf8())
            .bind(9, summary.createdAt.toMSecsSinceEpoch())
            .bind(10, summary.durationMs)
            .bind(11, qint64{summary.isCorrected})
            .bind(12, qint64{summary.hasProtocol})
            .bind(13, summary.beginning.toUtf8())
            .bind(14, entry.content->audioFileName.toUtf8())
            .bind(15, HistorySearch::lettersOf(entry.content->words));
    }
    file.run();
    if (entry.content)
        HistorySearch(*m_database).put(m_database->lastRow(), entry.content->words);
}

QList<RecordSummary> HistoryIndex::records()
{
    return attempt([this] {
        QList<RecordSummary> records;
        SqliteDatabase::Statement row = m_database->prepare(
            "SELECT id, kind, title, created, duration, isCorrected, hasProtocol, beginning, modified FROM "
            "file"
            " WHERE id IS NOT NULL AND NOT EXISTS (SELECT 1 FROM file AS other WHERE other.id = file.id AND"
            " (other.isOwn > file.isOwn OR (other.isOwn = file.isOwn AND other.name < file.name)))"
            " ORDER BY created DESC, name");
        while (row.step())
            records.append(summaryOf(row));
        return records;
    });
}

QList<QByteArray> HistoryIndex::filesOf(const QUuid &id)
{
    return attempt([this, &id] {
        QList<QByteArray> names;
        SqliteDatabase::Statement row =
            m_database->prepare("SELECT name FROM file WHERE id = ? ORDER BY isOwn DESC, name");
        row.bindBlob(1, id.toRfc4122());
        while (row.step())
            names.append(row.bytes(0));
        return names;
    });
}

QSet<QString> HistoryIndex::audioFileNames()
{
    return attempt([this] {
        QSet<QString> names;
        SqliteDatabase::Statement row = m_database->prepare("SELECT audio FROM file WHERE audio <> ''");
        while (row.step())
            names.insert(row.text(0));
        return names;
    });
}

QSet<QUuid> HistoryIndex::search(const QString &text)
{
    return attempt([this, &text] { return HistorySearch(*m_database).find(text); });
}

bool HistoryIndex::eraseResidue()
{
    return attempt([this] { return HistorySearch(*m_database).eraseResidue(); });
}

bool HistoryIndex::prepareSearch()
{
    return attempt([this] { return HistorySearch(*m_database).prepare(); });
}

} // namespace orvane
