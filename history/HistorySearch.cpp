#include "history/HistorySearch.h"

#include <QList>

#include <set>
#include <utility>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

/// So many that others wait for a tenth of a second.
constexpr int filesPreparedAtOnce = 32;

/// Pages of the file that are rewritten at once: as long.
constexpr qint64 pagesMergedAtOnce = 250;

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

QString quoted(QString word)
{
    return u'"' + word.replace(u'"', u"\"\""_s) + u'"';
}

/// The rows that are left, each an id.
QSet<QUuid> idsIn(SqliteDatabase::Statement &row)
{
    QSet<QUuid> ids;
    while (row.step())
        ids.insert(QUuid::fromRfc4122(row.bytes(0)));
    return ids;
}

} // namespace

QString HistorySearch::wordsOf(const TranscriptRecord &record)
{
    // Line feeds keep words of different texts apart; those at the end complete the last groups of letters.
    const QStringList texts = {
        record.title, record.text, record.corrected.value_or(QString()), record.summary.value_or(QString()),
        QString(),    QString()};
    return folded(texts.join(u'\n'));
}

QByteArray HistorySearch::lettersOf(const QString &words)
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

void HistorySearch::put(qint64 file, const QString &words)
{
    m_database.prepare("INSERT INTO spoken (number, words) VALUES (?, ?)")
        .bind(1, file)
        .bind(2, words.toUtf8())
        .run();
}

void HistorySearch::remove(qint64 file)
{
    m_database
        .prepare("INSERT INTO trigram (trigram, rowid, words) SELECT 'delete', number, words"
                 " FROM spoken JOIN file USING (number) WHERE number = ? AND isPrepared = 1")
        .bind(1, file)
        .run();
    m_database.prepare("DELETE FROM spoken WHERE number = ?").bind(1, file).run();
}

QSet<QUuid> HistorySearch::find(const QString &text)
{
    const QStringList words = folded(text).simplified().split(u' ', Qt::SkipEmptyParts);
    return findPrepared(words).unite(findOthers(words));
}

QSet<QUuid> HistorySearch::findPrepared(const QStringList &words)
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

    SqliteDatabase::Statement row = m_database.prepare(sql.constData());
    int parameter = 0;
    for (const QString &letter : letters)
        row.bind(++parameter, letter.toUtf8());
    if (!groups.isEmpty())
        row.bind(++parameter, groups.join(u" AND "_s).toUtf8());
    return idsIn(row);
}

QSet<QUuid> HistorySearch::findOthers(const QStringList &words)
{
    QByteArray sql = "SELECT id FROM file JOIN spoken USING (number) WHERE isPrepared = 0 AND id IS NOT NULL";
    for (qsizetype i = 0; i < words.size(); ++i)
        sql += " AND instr(words, ?) > 0";
    SqliteDatabase::Statement row = m_database.prepare(sql.constData());
    for (qsizetype i = 0; i < words.size(); ++i)
        row.bind(int(i + 1), words.at(i).toUtf8());
    return idsIn(row);
}

// The groups of letters that begin with these: one of them stands wherever these do.
QString HistorySearch::termsWith(const QString &letters)
{
    const QByteArray first = letters.toUtf8();
    SqliteDatabase::Statement row = m_database.prepare("SELECT term FROM term WHERE term >= ? AND term < ?");
    row.bind(1, first).bind(2, first + "\xf4\x8f\xbf\xbf");
    QStringList terms;
    while (row.step())
        terms.append(quoted(row.text(0)));
    return terms.isEmpty() ? QString() : u'(' + terms.join(u" OR "_s) + u')';
}

bool HistorySearch::prepare()
{
    SqliteTransaction transaction(m_database);
    SqliteDatabase::Statement row =
        m_database.prepare("SELECT number FROM file WHERE isPrepared = 0 AND id IS NOT NULL LIMIT ?");
    row.bind(1, qint64{filesPreparedAtOnce});
    QList<qint64> numbers;
    while (row.step())
        numbers.append(row.integer(0));
    SqliteDatabase::Statement prepare = m_database.prepare(
        "INSERT INTO trigram (rowid, words) SELECT number, words FROM spoken WHERE number = ?");
    SqliteDatabase::Statement note = m_database.prepare("UPDATE file SET isPrepared = 1 WHERE number = ?");
    for (const qint64 number : numbers) {
        prepare.bind(1, number).run();
        note.bind(1, number).run();
    }
    transaction.commit();
    return numbers.size() == filesPreparedAtOnce;
}

void HistorySearch::noteResidue()
{
    m_database.run("DELETE FROM residue; INSERT INTO residue VALUES (0)");
}

// The index keeps what was deleted beside what deletes it until both meet in a merge of all its parts.
bool HistorySearch::eraseResidue()
{
    SqliteDatabase::Statement residue = m_database.prepare("SELECT isBeingErased FROM residue");
    if (!residue.step())
        return false;
    const bool isBeingErased = residue.integer(0) != 0;
    residue.step(); // to its end, or the checkpoint would find the file in use
    const auto changes = [this] {
        SqliteDatabase::Statement row = m_database.prepare("SELECT total_changes()");
        row.step();
        return row.integer(0);
    };
    SqliteTransaction transaction(m_database);
    const qint64 before = changes();
    // A negative number makes one part of all, of which positive ones then do so many pages each.
    m_database.prepare("INSERT INTO trigram (trigram, rank) VALUES ('merge', ?)")
        .bind(1, isBeingErased ? pagesMergedAtOnce : -pagesMergedAtOnce)
        .run();
    const bool isDone = changes() - before < 2;
    m_database.run(isDone ? "DELETE FROM residue" : "UPDATE residue SET isBeingErased = 1");
    transaction.commit();
    if (isDone)
        m_database.run("PRAGMA wal_checkpoint (TRUNCATE)");
    return !isDone;
}

} // namespace orvane
