#pragma once

#include "history/TranscriptRecord.h"

#include <QList>
#include <QString>
#include <QUuid>

#include <chrono>
#include <optional>

namespace orvane {

class HistoryStore;

/// What was recognised in a media file.
struct FileTranscript
{
    /// Of the media file; may be relative to the working folder.
    QString path;
    /// Of a medium that is no file of the user's; empty to take the file's name.
    QString title = {};
    QList<DisplaySegment> segments;
    QString text;
    QString modelID;
    QString languageCode;
    /// Of the medium; none when unknown, and then the end of what was said counts.
    std::optional<std::chrono::milliseconds> length = std::nullopt;
    /// What the user should know of it, for the record's log; empty when nothing.
    QString remark = {};

    /// The record for it, made now and not yet in the history.
    [[nodiscard]] TranscriptRecord record() const;
};

/// Makes the history's record of a transcribed media file. Main thread.
class FileRecordSaver
{
public:
    /// The history must outlive this object.
    explicit FileRecordSaver(HistoryStore &history) : m_history(history) {}

    /// The id of the record; none when there is no text to keep.
    [[nodiscard]] std::optional<QUuid> save(const FileTranscript &transcript) const;

private:
    HistoryStore &m_history;
};

} // namespace orvane
