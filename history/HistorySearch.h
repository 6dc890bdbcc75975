#pragma once

#include "history/SqliteDatabase.h"
#include "history/TranscriptRecord.h"

#include <QByteArray>
#include <QSet>
#include <QString>
#include <QStringList>
#include <QUuid>

namespace orvane {

/// The search in the tables of an index. The words of a new file are read in every search; once the file is
/// prepared, groups of three letters lead to it, however long the history is. Throws the database's Failure.
class HistorySearch
{
public:
    /// Makes its tables, beside which there is to be a table "file" with its columns number, id, letters and
    /// isPrepared.
    static constexpr auto tables =
        "CREATE INDEX unprepared ON file (isPrepared) WHERE isPrepared = 0 AND id IS NOT NULL;"
        "CREATE TABLE spoken (number INTEGER PRIMARY KEY, words TEXT NOT NULL);"
        "CREATE VIRTUAL TABLE trigram USING fts5 (words, content = 'spoken', content_rowid = 'number',"
        " tokenize = 'trigram case_sensitive 1');"
        "CREATE VIRTUAL TABLE term USING fts5vocab (trigram, row);"
        "CREATE TABLE residue (isBeingErased INTEGER NOT NULL);";

    explicit HistorySearch(SqliteDatabase &database) : m_database(database) {}

    /// All of a record that is searched, with its case folded.
    [[nodiscard]] static QString wordsOf(const TranscriptRecord &record);
    /// Each letter of the words once, so that a single one is found without reading them.
    [[nodiscard]] static QByteArray lettersOf(const QString &words);

    /// The words of the file of that number.
    void put(qint64 file, const QString &words);
    void remove(qint64 file);

    /// The records that hold every word of the text somewhere, in any case of letters.
    [[nodiscard]] QSet<QUuid> find(const QString &text);
    /// Prepares some files; false when none is left.
    [[nodiscard]] bool prepare();

    /// Removed files leave their groups of letters behind, from which their words could be put together
    /// again: these are to be erased.
    void noteResidue();
    /// Does a moment's work on it; false when nothing is left of it, in the file neither.
    [[nodiscard]] bool eraseResidue();

private:
    [[nodiscard]] QSet<QUuid> findPrepared(const QStringList &words);
    [[nodiscard]] QSet<QUuid> findOthers(const QStringList &words);
    [[nodiscard]] QString termsWith(const QString &letters);

    SqliteDatabase &m_database;
};

} // namespace orvane
