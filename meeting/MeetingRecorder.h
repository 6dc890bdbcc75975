#pragma once

#include "base/Scope.h"
#include "meeting/MeetingSource.h"
#include "meeting/RecordedMeeting.h"
#include "meeting/RecordingWriter.h"
#include "meeting/SleepInhibitor.h"

#include <QElapsedTimer>
#include <QTimer>

#include <functional>
#include <memory>
#include <optional>

namespace orvane {

/// Records one meeting into its file: what was said is on the disk for good some seconds later. Keeps the
/// system awake meanwhile. Main thread; must outlive its tasks.
class MeetingRecorder : public QObject
{
    Q_OBJECT

public:
    /// Bytes that can still be written in a folder; negative when unknown. Called on any thread.
    using FreeSpace = std::function<qint64(const QString &folder)>;
    [[nodiscard]] static qint64 freeSpaceOfDisk(const QString &folder);

    /// `path` names the meeting's audio, a file that is there already.
    MeetingRecorder(std::unique_ptr<MeetingSource> source, RecordedMeeting meeting, const QString &path,
                    FreeSpace freeSpace);
    /// Whatever was recorded is written first.
    ~MeetingRecorder() override;

    /// Ends when the microphone records. Throws Error; the file is closed then.
    [[nodiscard]] QCoro::Task<> start();
    /// Ends the recording and completes the file. Returns why it is not whole, in the interface language;
    /// empty when it is.
    [[nodiscard]] QCoro::Task<QString> finish();

    [[nodiscard]] const MeetingSource &source() const { return *m_source; }
    /// As long as it is by now.
    [[nodiscard]] RecordedMeeting meeting() const;
    /// "Идёт запись…" and what the user should know meanwhile, in the interface language.
    [[nodiscard]] QString status() const;
    /// The latter alone; empty when there is nothing.
    [[nodiscard]] QString warning() const;
    /// Why it ended by itself, in the interface language; empty when it did not.
    [[nodiscard]] QString problem() const { return m_problem; }

Q_SIGNALS:
    /// Nothing more comes: finish() completes what there is.
    void endedByItself();
    void levelChanged();
    void statusChanged();
    /// From time to time: the recording is longer.
    void elapsed();

private:
    void putOnDisk();
    [[nodiscard]] QCoro::Task<> lookAtSpace();

    const RecordedMeeting m_meeting;
    const QString m_path;
    const FreeSpace m_freeSpace;
    /// Negative while unknown.
    qint64 m_freeBytes = -1;
    QString m_problem;
    std::shared_ptr<RecordingWriter> m_writer;
    const std::unique_ptr<MeetingSource> m_source;
    std::optional<SleepInhibitor> m_awake;
    QElapsedTimer m_clock;
    QTimer m_elapsedTimer;
    QTimer m_syncTimer;
    QTimer m_spaceTimer;
    Scope m_scope;
};

} // namespace orvane
