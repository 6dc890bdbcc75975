#pragma once

#include "base/StandardFolders.h"
#include "base/files/FileLock.h"
#include "base/files/FileStamp.h"
#include "history/TranscriptRecord.h"
#include "history/TranscriptRecordReader.h"

#include <QByteArray>

#include <optional>
#include <vector>

namespace orvane {

/// The history's files: one private JSON file per record, named by its id. Other processes may work in the
/// same folder at the same time. Any thread.
class HistoryFolder
{
public:
    struct RecordFile
    {
        /// None when the file cannot be read.
        std::optional<FileStamp> stamp;
        /// None when it holds no record.
        std::optional<TranscriptRecord> record;
    };

    /// Reads one file after another and reuses its memory: one for each thread.
    class Reader
    {
    public:
        explicit Reader(const HistoryFolder &folder) : m_folder(folder) {}
        [[nodiscard]] RecordFile read(const QByteArray &fileName);

    private:
        const HistoryFolder &m_folder;
        TranscriptRecordReader m_reader;
        QByteArray m_contents;
    };

    /// A hundred hours of speech take less; a larger file is no record.
    static constexpr qint64 maxFileSize = 64 << 20;

    explicit HistoryFolder(const StandardFolders &folders);

    /// Makes the history folder when it is missing and leaves both it and the recordings to their owner
    /// alone: folders 0700, the files in them 0600. Failures are ignored.
    void prepare() const;

    /// Names of the files that may be records; none when the folder cannot be listed.
    [[nodiscard]] std::optional<std::vector<QByteArray>> fileNames() const;
    [[nodiscard]] std::optional<FileStamp> stampOf(const QByteArray &fileName) const;

    /// Keeps other processes of this program from writing here while it lives. Waits for them; none where the
    /// file system has no locks.
    [[nodiscard]] std::optional<FileLock> lock() const;

    /// Writes the record to the file of its id: the old contents or the new, never a part. Throws Error.
    void save(const TranscriptRecord &record) const;
    /// None is no failure. Throws Error.
    void remove(const QByteArray &fileName) const;

private:
    [[nodiscard]] QByteArray path(const QByteArray &fileName) const;

    const QString m_history;
    const QString m_recordings;
};

} // namespace orvane
