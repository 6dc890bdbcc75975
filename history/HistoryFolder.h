#pragma once

#include "base/Error.h"
#include "base/StandardFolders.h"
#include "base/files/FileStamp.h"
#include "history/TranscriptRecord.h"

#include <QHash>
#include <QList>

#include <optional>

namespace orvane {

/// The history on disk: one private JSON file per record, named by its id. Other processes may work in
/// the same folder at the same time. Any thread, one at a time.
class HistoryFolder
{
public:
    class FolderError : public Error
    {
    public:
        enum class Kind { NotSaved, NotDeleted };

        FolderError(Kind kind, const QString &reason);
        [[nodiscard]] Kind kind() const { return m_kind; }

    private:
        Kind m_kind;
    };

    explicit HistoryFolder(const StandardFolders &folders);

    /// Makes the history folder when it is missing and leaves both it and the recordings to their owner
    /// alone. Failures are ignored.
    void prepare() const;
    /// Folders 0700, the files in them 0600, for the history and the recordings. Failures are ignored.
    void tightenPermissions() const;

    /// Reads every record, on all cores: newest first, those of equal time by file name. Files that are
    /// no records are passed over and stay as they are. A record counts once per file that holds it.
    [[nodiscard]] QList<TranscriptRecord> load();

    /// Writes the record to the file of its id: the old contents or the new, never a part. Throws
    /// FolderError.
    void save(const TranscriptRecord &record);
    /// Deletes the file of that id; none is no failure. Throws FolderError.
    void remove(const QUuid &id);

    /// What others did to the folder since it was last looked at or written here: for each id whose files
    /// changed, the records that they hold now (none when the last was deleted).
    [[nodiscard]] QHash<QUuid, QList<TranscriptRecord>> rescan();

private:
    struct KnownFile
    {
        FileStamp stamp;
        /// None when the file is no record.
        std::optional<QUuid> id;
    };

    [[nodiscard]] QByteArray path(const QByteArray &fileName) const;

    const QString m_history;
    const QString m_recordings;
    /// By file name. What this object has seen or written.
    QHash<QByteArray, KnownFile> m_known;
};

} // namespace orvane
