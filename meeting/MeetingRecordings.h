#pragma once

#include "base/Scope.h"
#include "meeting/MeetingRecorder.h"
#include "meeting/RecordingsFolder.h"

#include <QObject>
#include <QThreadPool>

#include <QCoroTask>

#include <memory>
#include <optional>

namespace orvane {

class HistoryStore;

/// The recordings folder as the main thread uses it: nothing here waits for the disk but the destructor.
/// Keeps the list of the recordings that are neither transcribed nor abandoned.
class MeetingRecordings : public QObject
{
    Q_OBJECT

public:
    /// The history must outlive this object.
    MeetingRecordings(const QString &folder, HistoryStore &history, QObject *parent = nullptr);
    ~MeetingRecordings() override;

    /// Makes the file and records into it: ends when the microphone records. Throws Error; no file is left
    /// then.
    [[nodiscard]] QCoro::Task<std::shared_ptr<MeetingRecorder>> record(RecordedMeeting meeting,
                                                                       std::unique_ptr<MeetingSource> source,
                                                                       MeetingRecorder::FreeSpace freeSpace);
    /// See RecordingsFolder.
    [[nodiscard]] QCoro::Task<> discard(RecordedMeeting meeting);
    [[nodiscard]] QString audioPath(const RecordedMeeting &meeting) const;
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
    /// Offers the transcription of the first of them, in the interface language; empty without any.
    [[nodiscard]] QString notice() const;
    [[nodiscard]] static QString noticeOf(const RecordedMeeting &leftover);

Q_SIGNALS:
    void leftoversChanged();

private:
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
