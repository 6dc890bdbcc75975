#pragma once

#include "base/Scope.h"
#include "meeting/MeetingRecorder.h"
#include "meeting/RecordingsFolder.h"

#include <QObject>
#include <QThreadPool>
#include <QUuid>

#include <QCoroTask>

#include <memory>
#include <optional>
#include <stop_token>

namespace orvane {

class HistoryStore;
struct Transcript;

/// The recordings folder as the main thread uses it: nothing here waits for the disk but the destructor.
/// Keeps the list of the recordings that are neither transcribed nor abandoned.
class MeetingRecordings : public QObject
{
    Q_OBJECT

public:
    /// The history must outlive this object.
    MeetingRecordings(const QString &folder, HistoryStore &history, QObject *parent = nullptr);
    ~MeetingRecordings() override;

    using Recorder = std::shared_ptr<MeetingRecorder>;

    /// Makes the file and records into it: ends when the microphone records. Throws Error, and Cancelled when
    /// stopped by then; no file is left in either case.
    [[nodiscard]] QCoro::Task<Recorder> record(RecordedMeeting meeting, std::unique_ptr<MeetingSource> source,
                                               MeetingRecorder::FreeSpace freeSpace, std::stop_token stop);
    [[nodiscard]] QString audioPath(const RecordedMeeting &meeting) const;
    /// Puts what was said in the meeting into the history and returns the record's id. Without a word it
    /// returns none, and the meeting is dealt with.
    [[nodiscard]] QUuid addToHistory(const RecordedMeeting &meeting, const Transcript &transcript);
    /// Ends when the record is on the disk and the meeting with that dealt with. Throws Error when it cannot
    /// be written; the meeting is offered then.
    [[nodiscard]] QCoro::Task<> whenSaved(RecordedMeeting meeting, QUuid recordID);
    /// The meeting is dealt with: it will not be offered, now or at the next start.
    void forget(const RecordedMeeting &meeting);

    /// Adds what earlier runs left behind and is not in the history. Returns why one of them cannot be
    /// offered, a sentence in the interface language; empty when all can.
    [[nodiscard]] QCoro::Task<QString> findLeftovers();
    /// Puts a recording whose transcription failed at the end of the list.
    void offer(const RecordedMeeting &meeting);

    /// Those of earlier runs first, oldest first.
    [[nodiscard]] const QList<RecordedMeeting> &leftovers() const { return m_leftovers; }
    [[nodiscard]] std::optional<RecordedMeeting> leftover(const QString &audioFileName) const;
    /// Empty when it is none of them.
    [[nodiscard]] QString leftoverPath(const QString &audioFileName) const;
    /// Offers the transcription of the first of them, in the interface language; empty without any.
    [[nodiscard]] QString notice() const;
    [[nodiscard]] static QString noticeOf(const RecordedMeeting &leftover);

Q_SIGNALS:
    void leftoversChanged();

private:
    [[nodiscard]] QCoro::Task<> discard(RecordedMeeting meeting);
    /// Those whose record could be written to the disk later.
    [[nodiscard]] QCoro::Task<> forgetSaved();

    HistoryStore &m_history;
    /// Used on the pool's thread only, but for its paths.
    RecordingsFolder m_folder;
    QThreadPool m_pool;
    QList<RecordedMeeting> m_leftovers;
    Scope m_scope;
};

} // namespace orvane
