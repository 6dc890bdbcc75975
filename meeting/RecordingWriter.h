#pragma once

#include "audio/WavFileWriter.h"

#include <QString>
#include <QThreadPool>

#include <QCoroTask>

#include <atomic>
#include <memory>
#include <vector>

namespace orvane {

/// Writes a meeting's audio on a thread of its own, in the order in which it comes, so that neither the audio
/// thread nor the main thread waits for the disk.
class RecordingWriter
{
public:
    /// `file` lies at that path and nobody else writes to it.
    RecordingWriter(std::shared_ptr<WavFileWriter> file, const QString &path);
    /// Waits for the disk if finish() was not called.
    ~RecordingWriter();
    Q_DISABLE_COPY_MOVE(RecordingWriter)

    /// Any thread.
    void append(std::vector<float> samples) noexcept;
    /// There was no memory for what was appended: it is lost, and so is everything after it. Any thread.
    [[nodiscard]] bool hasFailed() const { return *m_hasFailed; }
    /// Has everything that was appended so far put on the disk for good. Any thread.
    void sync();
    /// Writes the sizes into the header and closes the file. False when samples were lost. Main thread; this
    /// object must outlive the task.
    [[nodiscard]] QCoro::Task<bool> finish();

private:
    const QString m_path;
    // The jobs own what they use: the last of them may end after this object began to.
    const std::shared_ptr<WavFileWriter> m_file;
    const std::shared_ptr<std::atomic<bool>> m_syncing = std::make_shared<std::atomic<bool>>(false);
    const std::shared_ptr<std::atomic<bool>> m_hasFailed = std::make_shared<std::atomic<bool>>(false);
    QThreadPool m_pool;
};

} // namespace orvane
