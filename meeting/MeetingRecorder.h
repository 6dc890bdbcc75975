#pragma once

#include "meeting/MeetingSource.h"
#include "meeting/RecordingWriter.h"
#include "meeting/SleepInhibitor.h"

#include <QTimer>

#include <functional>
#include <memory>
#include <optional>
#include <stop_token>

namespace orvane {

/// Records one meeting into its file: what was said is on the disk for good some seconds later. Keeps the
/// system awake meanwhile. Main thread; must outlive its tasks.
class MeetingRecorder : public QObject
{
    Q_OBJECT

public:
    /// Bytes that can still be written in a folder; negative when unknown. Called on any thread.
    using FreeSpace = std::function<qint64(const QString &folder)>;

    /// `path` names a file that is there already.
    MeetingRecorder(std::unique_ptr<MeetingSource> source, const QString &path, FreeSpace freeSpace);
    ~MeetingRecorder() override;

    /// Ends when the microphone records. Throws Error.
    [[nodiscard]] QCoro::Task<> start();
    /// Ends the recording and completes the file; false when some of it could not be written.
    [[nodiscard]] QCoro::Task<bool> finish();

    [[nodiscard]] const MeetingSource &source() const { return *m_source; }
    /// What the user should know while it records, in the interface language; empty when all is well.
    [[nodiscard]] QString warning() const;

Q_SIGNALS:
    void levelChanged();
    void warningChanged();

private:
    void putOnDisk();
    [[nodiscard]] QCoro::Task<> lookAtSpace();

    const QString m_path;
    const FreeSpace m_freeSpace;
    /// Negative while unknown.
    qint64 m_freeBytes = -1;
    std::shared_ptr<RecordingWriter> m_writer;
    const std::unique_ptr<MeetingSource> m_source;
    std::optional<SleepInhibitor> m_awake;
    QTimer m_syncTimer;
    QTimer m_spaceTimer;
    std::stop_source m_lifetime;
};

} // namespace orvane
