#include "meeting/MeetingRecorder.h"

#include "base/Async.h"
#include "base/localization/Localization.h"

#include <QFileInfo>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orvane {

namespace {

constexpr double chunkSeconds = 1;
/// With the second that a chunk takes to fill, nothing is older than 5 s when it is on the disk.
constexpr auto syncInterval = 2s;
constexpr auto spaceInterval = 5s;
constexpr qint64 bytesPerMinute = qint64(MeetingSource::sampleRate) * 2 * 60;
constexpr qint64 fewMinutes = 15;

} // namespace

MeetingRecorder::MeetingRecorder(std::unique_ptr<MeetingSource> source, const QString &path,
                                 FreeSpace freeSpace)
    : m_path(path),
      m_freeSpace(std::move(freeSpace)),
      m_source(std::move(source))
{
    connect(m_source.get(), &MeetingSource::levelChanged, this, &MeetingRecorder::levelChanged);
    connect(m_source.get(), &MeetingSource::isSilentChanged, this, &MeetingRecorder::warningChanged);
    connect(&m_syncTimer, &QTimer::timeout, this, &MeetingRecorder::putOnDisk);
    connect(&m_spaceTimer, &QTimer::timeout, this, [this] { spawn(lookAtSpace()); });
}

MeetingRecorder::~MeetingRecorder()
{
    m_lifetime.request_stop();
}

QCoro::Task<> MeetingRecorder::start()
{
    const auto open = [path = m_path] {
        return std::make_shared<WavFileWriter>(path, MeetingSource::sampleRate);
    };
    m_writer = std::make_shared<RecordingWriter>(co_await offMainThread(open), m_path);
    co_await lookAtSpace();
    m_source->setChunks(chunkSeconds, [writer = m_writer](std::vector<float> samples) {
        writer->append(std::move(samples));
    });
    co_await m_source->start();
    m_awake.emplace(Localization::text(u"Идёт запись совещания"));
    m_syncTimer.start(syncInterval);
    m_spaceTimer.start(spaceInterval);
}

QCoro::Task<bool> MeetingRecorder::finish()
{
    m_syncTimer.stop();
    m_spaceTimer.stop();
    m_awake.reset();
    try {
        co_await m_source->stop();
    } catch (const Error &error) {
        qWarning("%s", error.what()); // what it recorded before counts
    }
    std::vector<float> leftover = m_source->drainPendingChunk();
    m_source->setChunks(0, {});
    co_return co_await m_writer->finish(std::move(leftover));
}

// The pending samples cannot be overtaken: the next chunk takes a second to fill.
void MeetingRecorder::putOnDisk()
{
    m_writer->append(m_source->drainPendingChunk());
    m_writer->sync();
}

QCoro::Task<> MeetingRecorder::lookAtSpace()
{
    const std::stop_token alive = m_lifetime.get_token();
    const auto look = [freeSpace = m_freeSpace, folder = QFileInfo(m_path).path()] {
        return freeSpace(folder);
    };
    const qint64 freeBytes = co_await offMainThread(look);
    throwIfCancelled(alive);
    m_freeBytes = freeBytes;
    Q_EMIT warningChanged();
}

QString MeetingRecorder::warning() const
{
    const qint64 minutes = m_freeBytes / bytesPerMinute;
    if (m_freeBytes >= 0 && minutes < fewMinutes)
        return Localization::text(u"на диске осталось места на %1 мин").arg(minutes);
    return m_source->isSilent() ? Localization::text(u"микрофон молчит") : QString();
}

} // namespace orvane
