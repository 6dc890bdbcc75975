#include "history/HistoryIndex.h"

#include "base/files/PrivateFile.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <new>
#include <set>
#include <utility>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

constexpr auto inMemory = ":memory:"_L1;

/// To be raised with every change of the tables or of what they hold.
constexpr qint64 version = 1;
constexpr auto setVersion = "PRAGMA user_version = 1";

// Not flushed: after a power loss the index may be the old one or damaged, and is made up for.
constexpr auto settings = "PRAGMA journal_mode = WAL;"
                          "PRAGMA synchronous = NORMAL;"
                          "PRAGMA secure_delete = ON;"
                          "PRAGMA cache_size = -512;";

// The words stand apart, so that a list need not read over them.
constexpr auto tables =
    "CREATE TABLE file (number INTEGER PRIMARY KEY, name BLOB NOT NULL UNIQUE, size INTEGER NOT NULL,"
    " modified INTEGER NOT NULL, inode INTEGER NOT NULL, id BLOB, isOwn INTEGER, kind INTEGER, title TEXT,"
    " created INTEGER, duration INTEGER, isCorrected INTEGER, hasProtocol INTEGER, beginning TEXT, audio "
    "TEXT,"
    " letters TEXT, isPrepared INTEGER NOT NULL DEFAULT 0);"
    "CREATE INDEX fileOfRecord ON file (id);"
    "CREATE INDEX unprepared ON file (isPrepared) WHERE isPrepared = 0 AND id IS NOT NULL;"
    "CREATE TABLE spoken (number INTEGER PRIMARY KEY, words TEXT NOT NULL);"
    "CREATE VIRTUAL TABLE trigram USING fts5 (words, content = 'spoken', content_rowid = 'number',"
    " tokenize = 'trigram case_sensitive 1');"
    "CREATE VIRTUAL TABLE term USING fts5vocab (trigram, row);";

/// So many that others wait for a tenth of a second.
constexpr int filesPreparedAtOnce = 32;

/// The index knows groups of so many letters.
constexpr int indexedLetters = 3;

QString folded(const QString &text)
{
    return text.toCaseFolded();
}

qsizetype letterCount(const QString &word)
{
    return word.toUcs4().size();
}

// Each once, so that a single letter is found without reading the words.
QByteArray lettersOf(const QString &words)
{
    std::set<QChar> letters;
    QChar last;
    for (const QChar letter : words) {
        if (letter != std::exchange(last, letter))
            letters.insert(letter);
    }
    QString each;
    for (const QChar letter : letters) {
        if (!letter.isSpace())
            each += letter;
    }
    return each.toUtf8();
}

QString quoted(QString word)
{
    return u'"' + word.replace(u'"', u"\"\""_s) + u'"';
}

QUuid idOf(const SqliteDatabase::Statement &row, int column)
{
    return QUuid::fromRfc4122(row.bytes(column));
}

RecordSummary summaryOf(const SqliteDatabase::Statement &row)
{
    return {.id = idOf(row, 0),
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
    // Line feeds keep words of different texts apart; those at the end complete the last groups of letters.
    const QStringList texts = {record->title,
                               record->text,
                               record->corrected.value_or(QString()),
                               record->summary.value_or(QString()),
                               QString(),
                               QString()};
    content = Content{.summary = RecordSummary::of(*record, stamp.modified),
                      .audioFileName = record->audioFileName.value_or(QString()),
                      .words = folded(texts.join(u'\n'))};
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
    attempt([this, &fileNames] {
        SqliteTransaction transaction(*m_database);
        for (const QByteArray &fileName : fileNames)
            removeFile(fileName);
        transaction.commit();
    });
}

void HistoryIndex::removeFile(const QByteArray &fileName)
{
    SqliteDatabase::Statement file =
        m_database->prepare("SELECT number, isPrepared FROM file WHERE name = ?");
    file.bindBlob(1, fileName);
    if (!file.step())
        return;
    const qint64 number = file.integer(0);
    if (file.integer(1) != 0) {
        m_database
            ->prepare("INSERT INTO trigram (trigram, rowid, words)"
                      " SELECT 'delete', number, words FROM spoken WHERE number = ?")
            .bind(1, number)
            .run();
    }
    m_database->prepare("DELETE FROM spoken WHERE number = ?").bind(1, number).run();
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
            .bind(15, lettersOf(entry.content->words));
    }
    file.run();
    if (entry.content) {
        m_database->prepare("INSERT INTO spoken (number, words) VALUES (last_insert_rowid(), ?)")
            .bind(1, entry.content->words.toUtf8())
            .run();
    }
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
    return attempt([this, words = folded(text).simplified().split(u' ', Qt::SkipEmptyParts)] {
        return searchPrepared(words).unite(searchOthers(words));
    });
}

QSet<QUuid> HistoryIndex::searchPrepared(const QStringList &words)
{
    QByteArray sql = "SELECT id FROM file WHERE isPrepared = 1 AND id IS NOT NULL";
    QStringList letters;
    QStringList groups;
    for (const QString &word : words) {
        const qsizetype count = letterCount(word);
        if (count == 1) {
            letters.append(word);
            sql += " AND instr(letters, ?) > 0";
        } else {
            groups.append(count < indexedLetters ? termsWith(word) : quoted(word));
        }
    }
    if (groups.contains(QString()))
        return {}; // no such pair of letters anywhere
    if (!groups.isEmpty())
        sql += " AND number IN (SELECT rowid FROM trigram WHERE trigram MATCH ?)";

    SqliteDatabase::Statement row = m_database->prepare(sql.constData());
    int parameter = 0;
    for (const QString &letter : letters)
        row.bind(++parameter, letter.toUtf8());
    if (!groups.isEmpty())
        row.bind(++parameter, groups.join(u" AND "_s).toUtf8());
    QSet<QUuid> found;
    while (row.step())
        found.insert(idOf(row, 0));
    return found;
}

QSet<QUuid> HistoryIndex::searchOthers(const QStringList &words)
{
    QByteArray sql = "SELECT id FROM file JOIN spoken USING (number) WHERE isPrepared = 0 AND id IS NOT NULL";
    for (qsizetype i = 0; i < words.size(); ++i)
        sql += " AND instr(words, ?) > 0";
    SqliteDatabase::Statement row = m_database->prepare(sql.constData());
    for (qsizetype i = 0; i < words.size(); ++i)
        row.bind(int(i + 1), words.at(i).toUtf8());
    QSet<QUuid> found;
    while (row.step())
        found.insert(idOf(row, 0));
    return found;
}

// The groups of letters that begin with these: one of them stands wherever these do.
QString HistoryIndex::termsWith(const QString &letters)
{
    const QByteArray first = letters.toUtf8();
    SqliteDatabase::Statement row = m_database->prepare("SELECT term FROM term WHERE term >= ? AND term < ?");
    row.bind(1, first).bind(2, first + "\xf4\x8f\xbf\xbf");
    QStringList terms;
    while (row.step())
        terms.append(quoted(row.text(0)));
    return terms.isEmpty() ? QString() : u'(' + terms.join(u" OR "_s) + u')';
}

bool HistoryIndex::prepareSearch()
{
    return attempt([this] {
        SqliteTransaction transaction(*m_database);
        SqliteDatabase::Statement row =
            m_database->prepare("SELECT number FROM file WHERE isPrepared = 0 AND id IS NOT NULL LIMIT ?");
        row.bind(1, qint64{filesPreparedAtOnce});
        QList<qint64> numbers;
        while (row.step())
            numbers.append(row.integer(0));
        SqliteDatabase::Statement prepare = m_database->prepare(
            "INSERT INTO trigram (rowid, words) SELECT number, words FROM spoken WHERE number = ?");
        SqliteDatabase::Statement note =
            m_database->prepare("UPDATE file SET isPrepared = 1 WHERE number = ?");
        for (const qint64 number : numbers) {
            prepare.bind(1, number).run();
            note.bind(1, number).run();
        }
        transaction.commit();
        return numbers.size() == filesPreparedAtOnce;
    });
}

} // namespace orvane
