#include "meeting/MeetingRecorder.h"

#include "audio/SampleRate.h"
#include "base/Async.h"
#include "base/files/ExistingFolder.h"
#include "base/localization/Localization.h"

#include <QStorageInfo>

#include <new>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orvane {

namespace {

constexpr double chunkSeconds = 1;
constexpr auto elapsedInterval = 500ms;
/// With the second that a chunk takes to fill, nothing is older than 5 s when it is on the disk.
constexpr auto syncInterval = 2s;
constexpr auto spaceInterval = 5s;
constexpr qint64 bytesPerMinute = qint64(sampleRate) * 2 * 60;
constexpr qint64 fewMinutes = 15;

} // namespace

MeetingRecorder::MeetingRecorder(std::unique_ptr<MeetingSource> source, RecordedMeeting meeting,
                                 const QString &path, FreeSpace freeSpace)
    : m_meeting(std::move(meeting)),
      m_path(path),
      m_freeSpace(std::move(freeSpace)),
      m_source(std::move(source))
{
    m_clock.start();
    connect(m_source.get(), &MeetingSource::endedByItself, this, [this](const QString &reason) {
        m_problem = reason;
        Q_EMIT endedByItself();
    });
    connect(m_source.get(), &MeetingSource::levelChanged, this, &MeetingRecorder::levelChanged);
    connect(m_source.get(), &MeetingSource::isSilentChanged, this, &MeetingRecorder::statusChanged);
    connect(&m_elapsedTimer, &QTimer::timeout, this, &MeetingRecorder::elapsed);
    connect(&m_syncTimer, &QTimer::timeout, this, &MeetingRecorder::putOnDisk);
    connect(&m_spaceTimer, &QTimer::timeout, this, [this] { spawn(lookAtSpace()); });
}

MeetingRecorder::~MeetingRecorder()
{
    m_scope.end();
    m_source->flushChunk();
}

QCoro::Task<> MeetingRecorder::start()
{
    const auto open = [path = m_path] { return std::make_shared<WavFileWriter>(path, sampleRate); };
    m_writer = std::make_shared<RecordingWriter>(co_await m_scope(offMainThread(open)), m_path);
    co_await m_scope(lookAtSpace());
    m_source->setChunks(chunkSeconds, [writer = m_writer](std::vector<float> samples) {
        writer->append(std::move(samples));
    });
    std::exception_ptr failure;
    try {
        co_await m_scope(m_source->start());
    } catch (const Gone &) {
        throw;
    } catch (...) {
        failure = std::current_exception();
    }
    if (failure) {
        m_source->setChunks(0, {});
        static_cast<void>(co_await m_scope(m_writer->finish()));
        std::rethrow_exception(failure);
    }
    m_awake.emplace(Localization::text(u"Идёт запись совещания"));
    m_elapsedTimer.start(elapsedInterval);
    m_syncTimer.start(syncInterval);
    m_spaceTimer.start(spaceInterval);
}

QCoro::Task<QString> MeetingRecorder::finish()
{
    m_elapsedTimer.stop();
    m_syncTimer.stop();
    m_spaceTimer.stop();
    m_awake.reset();
    try {
        co_await m_scope(m_source->stop());
    } catch (const Gone &) {
        throw;
    } catch (const Error &error) {
        qWarning("%s", error.what()); // what it recorded before counts
    }
    m_source->flushChunk();
    m_source->setChunks(0, {});
    const bool isWritten = co_await m_scope(m_writer->finish());
    co_return isWritten
        ? m_problem
        : Localization::text(u"Запись сохранена частично — возможно, на диске не хватило места.");
}

qint64 MeetingRecorder::freeSpaceOfDisk(const QString &folder)
{
    const QStorageInfo disk(existingFolder(folder));           // before the first recording there is none
    return disk.bytesTotal() > 0 ? disk.bytesAvailable() : -1; // some file systems do not know
}

void MeetingRecorder::putOnDisk()
{
    if (m_writer->hasFailed() && m_problem.isEmpty()) {
        m_problem = descriptionOf(std::bad_alloc());
        Q_EMIT endedByItself();
        return;
    }
    m_source->flushChunk();
    m_writer->sync();
}

QCoro::Task<> MeetingRecorder::lookAtSpace()
{
    const auto look = [freeSpace = m_freeSpace, folder = QFileInfo(m_path).path()] {
        return freeSpace(folder);
    };
    m_freeBytes = co_await m_scope(offMainThread(look));
    Q_EMIT statusChanged();
}

RecordedMeeting MeetingRecorder::meeting() const
{
    RecordedMeeting meeting = m_meeting;
    meeting.durationMs = m_clock.elapsed();
    return meeting;
}

QString MeetingRecorder::status() const
{
    const QString status = Localization::text(u"Идёт запись…");
    const QString problem = warning();
    return problem.isEmpty() ? status : status + u" · "_s + problem;
}

QString MeetingRecorder::warning() const
{
    const qint64 minutes = m_freeBytes / bytesPerMinute;
    if (m_freeBytes >= 0 && minutes == 0)
        return Localization::text(u"на диске нет места");
    if (m_freeBytes >= 0 && minutes < fewMinutes)
        return Localization::text(u"на диске осталось места на %1 мин").arg(minutes);
    return m_source->isSilent() ? Localization::text(u"микрофон молчит") : QString();
}

} // namespace orvane
