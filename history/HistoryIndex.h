#pragma once

#include "base/files/FileStamp.h"
#include "history/RecordSummary.h"
#include "history/SqliteDatabase.h"

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QSet>
#include <QString>
#include <QUuid>

#include <memory>
#include <optional>
#include <vector>

namespace orvane {

/// What lists and searches need of the history's files, in an SQLite file that may be deleted at any time and
/// that processes share. A damaged one is made anew, one that cannot be used is done without: both are empty
/// and have another generation. Any thread, one at a time.
class HistoryIndex
{
public:
    /// A file of the history folder.
    struct Entry
    {
        struct Content
        {
            RecordSummary summary;
            QString audioFileName;
            /// See HistorySearch.
            QString words;
        };

        QByteArray fileName;
        FileStamp stamp;
        /// None for a file that is no record.
        std::optional<Content> content;

        Entry() = default;
        Entry(QByteArray name, const FileStamp &stamp, const std::optional<TranscriptRecord> &record);
    };

    /// Without a path nothing is kept.
    explicit HistoryIndex(QString path);

    /// Another number than before: what was put here earlier is gone.
    [[nodiscard]] int generation() const { return m_generation; }

    [[nodiscard]] QHash<QByteArray, FileStamp> files();
    /// Adds the files or replaces what was known of them.
    void put(const std::vector<Entry> &entries);
    void remove(const QList<QByteArray> &fileNames);

    /// Newest first, those of equal time by file name. Of several files of one record the one that is named
    /// by its id counts, else the first by name.
    [[nodiscard]] QList<RecordSummary> records();
    [[nodiscard]] QList<QByteArray> filesOf(const QUuid &id);
    [[nodiscard]] QSet<QString> audioFileNames();

    /// See HistorySearch.
    [[nodiscard]] QSet<QUuid> search(const QString &text);
    /// Does a moment's work on what makes searching fast; false when nothing is left of it. A search is right
    /// before that, too.
    [[nodiscard]] bool prepareSearch();
    [[nodiscard]] bool eraseResidue();

private:
    template <typename Work>
    auto attempt(Work work);
    void open();
    [[nodiscard]] qint64 presentVersion();
    void makeTables();
    void recover(const SqliteDatabase::Failure &failure);

    void removeFile(const QByteArray &fileName);
    void insert(const Entry &entry);

    QString m_path;
    bool m_wasMadeAnew = false;
    int m_generation = 0;
    std::unique_ptr<SqliteDatabase> m_database;
};

} // namespace orvane
