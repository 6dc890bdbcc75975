#pragma once

#include "base/StandardFolders.h"
#include "history/HistoryFolder.h"
#include "history/HistoryIndex.h"
#include "history/RecordSummary.h"
#include "history/TranscriptRecord.h"

#include <QHash>
#include <QList>
#include <QSet>
#include <QString>
#include <QUuid>

#include <functional>
#include <optional>
#include <span>
#include <vector>

namespace orvane {

/// A change of a record. It may be applied again to what another program has made of the record.
using RecordEdit = std::function<void(TranscriptRecord &)>;

/// The history as it is worked with: its files, the index over them, and the changes that could not be
/// written yet. They count as made, here, and are written as soon as a retry succeeds. Waits for the disk;
/// any thread, one at a time.
class HistoryArchive
{
public:
    struct Listing
    {
        /// Newest first.
        QList<RecordSummary> records;
        /// What a user should know of a file that was passed over; one sentence, mostly empty.
        QString notice;
    };

    explicit HistoryArchive(const StandardFolders &folders);

    /// Makes the folder and leaves it to its owner alone.
    void prepare() const { m_folder.prepare(); }

    /// Reads what has changed since the index was brought up to date; none when the folder cannot be listed.
    [[nodiscard]] std::optional<Listing> list();
    /// Throws Error when there is none of that id.
    [[nodiscard]] TranscriptRecord read(const QUuid &id);
    [[nodiscard]] QSet<QString> audioFileNames();

    /// See HistoryIndex.
    [[nodiscard]] QSet<QUuid> search(const QString &text);
    [[nodiscard]] bool prepareSearch() { return m_index.prepareSearch(); }
    [[nodiscard]] bool eraseResidue() { return m_index.eraseResidue(); }

    /// Each throws Error when it could not be written.
    void add(const TranscriptRecord &record);
    /// Changes the record as it is on disk now. Without one of that id nothing happens.
    void edit(const QUuid &id, const RecordEdit &edit);
    /// Deletes all files of the record.
    void remove(const QUuid &id);
    /// Writes what could not be written before.
    void retry(const QUuid &id);
    /// The same for all records and, as nobody is there any more to hear of it, without a failure.
    void retryAll();

private:
    struct Unsaved
    {
        bool isRemoved = false;
        std::optional<TranscriptRecord> added;
        QList<RecordEdit> edits;
    };

    /// Brings the index up to date; false when the folder cannot be listed.
    bool refresh();
    bool compareWithFolder();
    [[nodiscard]] std::vector<HistoryIndex::Entry> readAll(std::span<const QByteArray> fileNames) const;

    [[nodiscard]] std::optional<TranscriptRecord> stored(const QUuid &id);
    [[nodiscard]] std::optional<TranscriptRecord> current(const QUuid &id);
    void write(const QUuid &id);
    void removeFiles(const QUuid &id);

    const HistoryFolder m_folder;
    HistoryIndex m_index;
    /// Something was written here since the index was brought up to date.
    bool m_isIndexBehind = true;
    QString m_notice;
    QHash<QUuid, Unsaved> m_unsaved;
};

} // namespace orvane
