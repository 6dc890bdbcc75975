#include "meeting/MeetingTranscriber.h"

#include "audio/CaptureError.h"
#include "base/AnyStop.h"
#include "base/Async.h"
#include "base/OneTimeEvent.h"
#include "base/localization/Localization.h"

#include <utility>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orvane {

namespace {

/// How long the end of the program waits for a disk.
constexpr auto quitPatience = 10s;

/// Both sentences, as far as there are two.
QString joined(const QString &first, const QString &second)
{
    return first.isEmpty() || second.isEmpty() ? first + second : first + u' ' + second;
}

} // namespace

MeetingTranscriber::MeetingTranscriber(Collaborators collaborators, const QString &recordingsFolder,
                                       QObject *parent)
    : MeetingState(parent),
      m_turns(collaborators.turns),
      m_makeSource(std::move(collaborators.makeSource)),
      m_requestMicrophone(std::move(collaborators.requestMicrophone)),
      m_freeSpace(std::move(collaborators.freeSpace)),
      m_transcription({.models = collaborators.models,
                       .settings = collaborators.settings,
                       .turns = collaborators.turns,
                       .pipeline = collaborators.pipeline}),
      m_recordings(recordingsFolder, collaborators.history)
{
    connect(&collaborators.models, &ModelManager::downloadedChanged, this, &MeetingTranscriber::stateChanged);
    connect(&m_recordings, &MeetingRecordings::leftoversChanged, this, &MeetingTranscriber::leftoversChanged);
}

MeetingTranscriber::~MeetingTranscriber()
{
    m_scope.end();
}

QString MeetingTranscriber::startRefusal() const
{
    if (isTranscribing() || m_quit.stop_requested())
        return EngineTurns::waitText();
    if (!isIdle())
        return Localization::text(u"Запись совещания уже идёт.");
    return m_transcription.hasModel() ? QString() : Localization::text(u"Модель распознавания недоступна.");
}

QString MeetingTranscriber::leftoverRefusal() const
{
    if (isRunning())
        return Localization::text(u"Запись совещания уже идёт.");
    if (!isIdle() || m_quit.stop_requested() || m_turns.isTaken())
        return EngineTurns::waitText();
    return leftovers().isEmpty() ? Localization::text(u"Нерасшифрованных записей нет.") : QString();
}

QCoro::Task<> MeetingTranscriber::start()
{
    if (!canStart())
        co_return;
    const Holds::Hold hold = m_holds.take();
    setStage(Stage::Starting);
    setOutcome(Outcome::None);
    QString failure;
    try {
        const AnyStop stop(m_scope.stop(), m_quit.get_token());
        if (!co_await m_scope(m_requestMicrophone(stop.token()), stop.token()))
            throw CaptureError::accessRefused();
        clearResult();
        m_recorder = co_await m_scope(begin());
    } catch (const Gone &) {
        throw;
    } catch (const std::exception &error) {
        failure = descriptionOf(error);
    }
    if (m_recorder) {
        showRecording();
        co_return;
    }
    operation().setError(failure);
    setStage(Stage::Idle);
    setOutcome(Outcome::NotStarted);
}

QCoro::Task<MeetingTranscriber::Recorder> MeetingTranscriber::begin()
{
    QString failure;
    try {
        co_return co_await m_scope(m_recordings.record(m_transcription.newMeeting(), m_makeSource(),
                                                       m_freeSpace, m_quit.get_token()));
    } catch (const Cancelled &) {
        throw;
    } catch (const std::exception &error) {
        const auto *capture = dynamic_cast<const CaptureError *>(&error);
        if (capture && capture->kind() == CaptureError::Kind::accessRefused)
            throw;
        failure = descriptionOf(error);
    }
    throw Error(Localization::text(u"Не удалось начать запись: ") + failure);
}

void MeetingTranscriber::showRecording()
{
    const MeetingRecorder *recorder = m_recorder.get();
    const auto showStatus = [this, recorder] { operation().setStatus(recorder->status()); };
    connect(recorder, &MeetingRecorder::levelChanged, this, &MeetingTranscriber::levelChanged);
    connect(recorder, &MeetingRecorder::statusChanged, this, showStatus);
    connect(recorder, &MeetingRecorder::elapsed, this,
            [this, recorder] { setElapsed(recorder->meeting().durationMs); });
    connect(recorder, &MeetingRecorder::endedByItself, this, &MeetingTranscriber::stop);
    showStatus();
    setStage(Stage::Recording);
    if (!recorder->problem().isEmpty())
        stop();
}

void MeetingTranscriber::stop()
{
    if (!isRunning())
        return;
    const RecordedMeeting meeting = m_recorder->meeting();
    setElapsed(meeting.durationMs);
    const auto work = [this, meeting](Progress progress, std::stop_token stop) {
        return completeAndTranscribe(meeting, std::move(progress), std::move(stop));
    };
    spawn(process(meeting, work));
}

QCoro::Task<MeetingTranscriber::Outcome>
MeetingTranscriber::completeAndTranscribe(RecordedMeeting meeting, Progress progress, std::stop_token stop)
{
    progress.setStatus(Localization::text(u"Подготовка записи…"));
    const QString problem = co_await m_scope(complete());
    const bool isStillShown = !stop.stop_requested() || isIdle();
    if (!problem.isEmpty() && isStillShown)
        operation().setError(problem);
    try {
        const Outcome outcome = co_await m_scope(transcribe(meeting, progress, stop), stop);
        co_return outcome == Outcome::Saved && !problem.isEmpty() ? Outcome::Partial : outcome;
    } catch (const Gone &) {
        throw;
    } catch (const Cancelled &) {
        if (!m_quit.stop_requested()) // the next start offers it
            m_recordings.forget(meeting);
        throw;
    } catch (const std::exception &error) {
        throw Error(joined(problem, descriptionOf(error)));
    }
}

QCoro::Task<QString> MeetingTranscriber::complete()
{
    const Holds::Hold hold = m_holds.take();
    const Recorder recorder = std::exchange(m_recorder, nullptr);
    recorder->disconnect(this);
    setStage(Stage::Idle);
    Q_EMIT levelChanged();
    co_return co_await recorder->finish();
}

QCoro::Task<> MeetingTranscriber::process(RecordedMeeting meeting, Operation::Work<Outcome> work)
{
    m_meeting = meeting;
    Outcome outcome = Outcome::Failed;
    try {
        outcome = co_await m_scope(operation().run<Outcome>(std::move(work)));
    } catch (const Cancelled &) {
        throw;
    } catch (const Error &) {
        operation().setStatus(Localization::text(u"Ошибка расшифровки (запись сохранена: ") +
                              meeting.audioFileName + u')');
    }
    setOutcome(outcome);
    if (outcome == Outcome::Failed)
        m_recordings.offer(meeting);
}

QCoro::Task<MeetingTranscriber::Outcome>
MeetingTranscriber::transcribe(RecordedMeeting meeting, Progress progress, std::stop_token stop)
{
    throwIfCancelled(stop);
    const MeetingTranscription::Result result =
        co_await m_scope(m_transcription.run(meeting, m_recordings.audioPath(meeting), progress, stop), stop);
    co_return publish(result);
}

MeetingTranscriber::Outcome MeetingTranscriber::publish(const MeetingTranscription::Result &result)
{
    const QUuid recordID = m_recordings.addToHistory(result.meeting, result.transcript);
    showResult(result.transcript.segments, recordID, result.transcript.damageText());
    if (recordID.isNull())
        return Outcome::NoSpeech;
    spawn(awaitSaving(result.meeting, recordID));
    return Outcome::Saved;
}

QCoro::Task<> MeetingTranscriber::awaitSaving(RecordedMeeting meeting, QUuid recordID)
{
    try {
        co_await m_scope(m_recordings.whenSaved(meeting, recordID));
    } catch (const Gone &) {
        throw;
    } catch (const std::exception &error) {
        if (lastRecordID() != recordID)
            co_return; // another meeting is shown by now
        operation().setError(joined(errorText(), descriptionOf(error)));
        setOutcome(Outcome::Failed);
    }
}

void MeetingTranscriber::cancelTranscription()
{
    if (!isTranscribing())
        return;
    operation().setStatus(Localization::text(u"Расшифровка отменена · аудиозапись сохранена"));
    operation().cancel();
    setOutcome(Outcome::Cancelled);
}

void MeetingTranscriber::reset()
{
    if (!isIdle())
        return;
    clearResult();
    operation().setStatus({});
}

QCoro::Task<> MeetingTranscriber::finishForQuit()
{
    m_quit.request_stop();
    stop();
    operation().cancel();
    static_cast<void>(co_await m_scope(m_holds.end()->waitFor(quitPatience)));
}

QCoro::Task<> MeetingTranscriber::findLeftovers()
{
    const QString problem = co_await m_scope(m_recordings.findLeftovers());
    if (!problem.isEmpty())
        operation().setError(problem);
}

void MeetingTranscriber::transcribeLeftover(const QString &audioFileName)
{
    const std::optional<RecordedMeeting> meeting = m_recordings.leftover(audioFileName);
    const QString refusal = leftoverRefusal();
    if (!refusal.isEmpty())
        operation().setError(refusal);
    if (!meeting || !refusal.isEmpty())
        return;
    clearResult();
    setElapsed(meeting->durationMs);
    const auto work = [this, meeting = *meeting](Progress progress, std::stop_token stop) {
        progress.setStatus(MeetingTranscription::statusOf(meeting));
        return transcribe(meeting, std::move(progress), std::move(stop));
    };
    spawn(process(*meeting, work));
}

void MeetingTranscriber::dismissLeftover(const QString &audioFileName)
{
    const std::optional<RecordedMeeting> meeting = m_recordings.leftover(audioFileName);
    const bool isInProgress = isTranscribing() && m_meeting.audioFileName == audioFileName;
    if (meeting && !isInProgress)
        m_recordings.forget(*meeting);
}

float MeetingTranscriber::level() const
{
    return m_recorder ? m_recorder->source().level() : 0;
}

QList<float> MeetingTranscriber::waveform() const
{
    return m_recorder ? m_recorder->source().waveform() : QList<float>();
}

QString MeetingTranscriber::warning() const
{
    return m_recorder ? m_recorder->warning() : QString();
}

} // namespace orvane
