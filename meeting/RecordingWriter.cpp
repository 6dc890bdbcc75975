#include "meeting/RecordingWriter.h"

#include "base/Async.h"
#include "base/files/FileControl.h"

#include <QFile>

#include <new>
#include <span>

namespace orvane {

namespace {

/// False when samples were lost.
bool close(WavFileWriter &writer, const QString &path)
{
    bool isWhole = true;
    try {
        writer.finalize();
    } catch (const Error &) {
        isWhole = false;
    }
    QFile file(path);
    return file.open(QFile::ReadOnly) && FileControl::flush(file.handle()) && isWhole;
}

/// Unless it has failed before: what is written has no holes.
void write(WavFileWriter &writer, std::span<const float> samples, std::atomic<bool> &hasFailed) noexcept
{
    try {
        if (!hasFailed)
            writer.append(samples);
    } catch (const std::bad_alloc &) {
        hasFailed = true;
    }
}

} // namespace

RecordingWriter::RecordingWriter(std::shared_ptr<WavFileWriter> file, const QString &path)
    : m_path(path),
      m_file(std::move(file))
{
    m_pool.setMaxThreadCount(1); // keeps the order
    m_pool.setExpiryTimeout(-1);
}

RecordingWriter::~RecordingWriter()
{
    waitForDone(m_pool);
    try {
        m_file->finalize();
    } catch (const Error &error) {
        qWarning("%s", error.what());
    }
}

void RecordingWriter::append(std::vector<float> samples) noexcept
{
    if (samples.empty())
        return;
    try {
        const auto shared = std::make_shared<const std::vector<float>>(std::move(samples));
        startOffMainThread(
            &m_pool, [file = m_file, shared, hasFailed = m_hasFailed] { write(*file, *shared, *hasFailed); });
    } catch (const std::bad_alloc &) {
        *m_hasFailed = true;
    }
}

void RecordingWriter::sync()
{
    if (m_syncing->exchange(true))
        return; // a disk that is slow gets no second request
    startOffMainThread(&m_pool, [file = m_file, syncing = m_syncing] {
        file->sync();
        *syncing = false;
    });
}

QCoro::Task<bool> RecordingWriter::finish()
{
    return offMainThread(&m_pool, [file = m_file, path = m_path] { return close(*file, path); });
}

} // namespace orvane
