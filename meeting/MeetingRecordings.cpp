#include "meeting/MeetingRecordings.h"

#include "base/Async.h"
#include "base/localization/Localization.h"
#include "history/HistoryStore.h"
#include "recognition/TranscriptPipeline.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orvane {

MeetingRecordings::MeetingRecordings(const QString &folder, HistoryStore &history, QObject *parent)
    : QObject(parent),
      m_history(history),
      m_folder(folder)
{
    m_pool.setMaxThreadCount(1);
    connect(&m_history, &HistoryStore::lastErrorChanged, this, [this] {
        if (m_history.lastError().isEmpty() && !m_leftovers.isEmpty())
            spawn(forgetSaved());
    });
}

MeetingRecordings::~MeetingRecordings()
{
    m_scope.end();
    waitForDone(m_pool);
}

QCoro::Task<MeetingRecordings::Recorder> MeetingRecordings::record(RecordedMeeting meeting,
                                                                   std::unique_ptr<MeetingSource> source,
                                                                   MeetingRecorder::FreeSpace freeSpace,
                                                                   std::stop_token stop)
{
    const auto create = [folder = &m_folder, meeting] { return folder->create(meeting); };
    meeting = co_await m_scope(offMainThread(&m_pool, create));
    const auto recorder = std::make_shared<MeetingRecorder>(std::move(source), meeting, audioPath(meeting),
                                                            std::move(freeSpace));
    std::exception_ptr failure;
    try {
        co_await m_scope(recorder->start());
        if (!stop.stop_requested())
            co_return recorder;
        static_cast<void>(co_await m_scope(recorder->finish()));
        throw Cancelled();
    } catch (const Gone &) {
        throw;
    } catch (...) {
        failure = std::current_exception();
    }
    co_await m_scope(discard(meeting));
    std::rethrow_exception(failure);
}

QCoro::Task<> MeetingRecordings::discard(RecordedMeeting meeting)
{
    return offMainThread(&m_pool, [folder = &m_folder, meeting] { folder->discard(meeting); });
}

QString MeetingRecordings::audioPath(const RecordedMeeting &meeting) const
{
    return m_folder.audioPath(meeting.audioFileName);
}

QUuid MeetingRecordings::addToHistory(const RecordedMeeting &meeting, const Transcript &transcript)
{
    const TranscriptRecord record = recordOf(meeting, transcript.segments);
    if (record.text.isEmpty()) {
        forget(meeting);
        return {};
    }
    m_history.add(record);
    if (const QString damage = transcript.damageText(); !damage.isEmpty())
        m_history.appendEvent(record.id, RecordEvent::Kind::Transcription, std::nullopt, damage);
    return record.id;
}

// The marker stays until then: without record and marker the recording would be lost.
QCoro::Task<> MeetingRecordings::whenSaved(RecordedMeeting meeting, QUuid recordID)
{
    try {
        co_await m_scope(m_history.whenSaved(recordID));
        forget(meeting);
    } catch (const Gone &) {
        throw;
    } catch (const std::exception &) {
        offer(meeting);
        throw;
    }
}

void MeetingRecordings::forget(const RecordedMeeting &meeting)
{
    startOffMainThread(&m_pool, [folder = &m_folder, meeting] { folder->forget(meeting); });
    const auto isIt = [&meeting](const RecordedMeeting &other) {
        return other.audioFileName == meeting.audioFileName;
    };
    if (m_leftovers.removeIf(isIt) > 0)
        Q_EMIT leftoversChanged();
}

QCoro::Task<QString> MeetingRecordings::findLeftovers()
{
    const auto find = [folder = &m_folder] { return folder->leftovers(); };
    RecordingsFolder::Leftovers found = co_await m_scope(offMainThread(&m_pool, find));
    if (found.meetings.isEmpty())
        co_return found.problem; // without a look into the history
    const QSet<QString> inHistory = co_await m_scope(m_history.audioFileNames());
    found.meetings.removeIf([&](const RecordedMeeting &meeting) {
        const bool hasRecord = inHistory.contains(meeting.audioFileName);
        if (hasRecord)
            forget(meeting);
        return hasRecord;
    });
    if (!found.meetings.isEmpty()) {
        m_leftovers = found.meetings + m_leftovers;
        Q_EMIT leftoversChanged();
    }
    co_return found.problem;
}

QCoro::Task<> MeetingRecordings::forgetSaved()
{
    const QSet<QString> inHistory = co_await m_scope(m_history.audioFileNames());
    for (const RecordedMeeting &meeting : QList(m_leftovers)) {
        if (inHistory.contains(meeting.audioFileName))
            forget(meeting);
    }
}

void MeetingRecordings::offer(const RecordedMeeting &meeting)
{
    m_leftovers.removeIf(
        [&meeting](const RecordedMeeting &other) { return other.audioFileName == meeting.audioFileName; });
    m_leftovers.append(meeting); // behind the others, which it must not keep from their turn
    Q_EMIT leftoversChanged();
}

std::optional<RecordedMeeting> MeetingRecordings::leftover(const QString &audioFileName) const
{
    const auto found = std::ranges::find(m_leftovers, audioFileName, &RecordedMeeting::audioFileName);
    return found == m_leftovers.end() ? std::nullopt : std::optional(*found);
}

QString MeetingRecordings::leftoverPath(const QString &audioFileName) const
{
    return leftover(audioFileName) ? m_folder.audioPath(audioFileName) : QString();
}

QString MeetingRecordings::notice() const
{
    return m_leftovers.isEmpty() ? QString() : noticeOf(m_leftovers.first());
}

QString MeetingRecordings::noticeOf(const RecordedMeeting &leftover)
{
    return Localization::text(u"Осталась нерасшифрованная запись: «%1», %2. Расшифровать?")
        .arg(meetingTitle(leftover.startedAt), timecodeOf(leftover.durationMs));
}

} // namespace orvane
