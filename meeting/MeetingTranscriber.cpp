#include "meeting/MeetingTranscriber.h"

#include "base/AnyStop.h"
#include "base/Async.h"
#include "base/localization/Localization.h"

#include <QDeadlineTimer>
#include <QStorageInfo>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orvane {

namespace {

constexpr auto elapsedInterval = 500ms;
/// How long the end of the program waits for a disk.
constexpr auto quitPatience = 10s;
constexpr auto quitInterval = 10ms;

QString recordingStatus(const MeetingRecorder &recorder)
{
    const QString status = Localization::text(u"Идёт запись…");
    const QString warning = recorder.warning();
    return warning.isEmpty() ? status : status + u" · "_s + warning;
}

QString transcribingStatus(double elapsed)
{
    const auto seconds = static_cast<qint64>(elapsed);
    return Localization::text(u"Расшифровка записи (%1:%2)…")
        .arg(seconds / 60)
        .arg(seconds % 60, 2, 10, QChar(u'0'));
}

} // namespace

MeetingTranscriber::MeetingTranscriber(Collaborators collaborators, const QString &recordingsFolder,
                                       QObject *parent)
    : MeetingState(parent),
      m_models(collaborators.models),
      m_settings(collaborators.settings),
      m_history(collaborators.history),
      m_turns(collaborators.turns),
      m_makeSource(std::move(collaborators.makeSource)),
      m_requestMicrophone(std::move(collaborators.requestMicrophone)),
      m_freeSpace(std::move(collaborators.freeSpace)),
      m_pipeline(collaborators.pipeline),
      m_recordings(recordingsFolder, m_history)
{
    m_elapsedTimer.setInterval(elapsedInterval);
    connect(&m_elapsedTimer, &QTimer::timeout, this,
            [this] { setElapsed(static_cast<double>(m_clock.elapsed()) / 1000); });
    connect(&m_models, &ModelManager::downloadedChanged, this, &MeetingTranscriber::stateChanged);
    connect(&m_recordings, &MeetingRecordings::leftoversChanged, this, &MeetingTranscriber::leftoversChanged);
}

MeetingTranscriber::~MeetingTranscriber()
{
    m_lifetime.request_stop();
}

qint64 MeetingTranscriber::freeSpaceOfDisk(const QString &folder)
{
    return QStorageInfo(folder).bytesAvailable();
}

QString MeetingTranscriber::startRefusal() const
{
    if (phase() == Phase::Transcribing || m_isQuitting)
        return EngineTurns::waitText();
    if (phase() != Phase::Idle)
        return Localization::text(u"Запись совещания уже идёт.");
    return m_models.resolved(m_settings.selectedModelID())
               ? QString()
               : Localization::text(u"Модель распознавания недоступна.");
}

QString MeetingTranscriber::stopRefusal() const
{
    return isRunning() ? QString() : Localization::text(u"Запись совещания не идёт.");
}

QString MeetingTranscriber::cancelRefusal() const
{
    if (isTranscribing())
        return {};
    return isRunning() ? Localization::text(u"Идёт запись: её завершает команда orvane meeting stop.")
                       : Localization::text(u"Расшифровка совещания не идёт.");
}

QString MeetingTranscriber::leftoverRefusal() const
{
    if (isRunning())
        return Localization::text(u"Запись совещания уже идёт.");
    if (phase() != Phase::Idle || m_isQuitting || m_turns.isTaken())
        return EngineTurns::waitText();
    return leftovers().isEmpty() ? Localization::text(u"Нерасшифрованных записей нет.") : QString();
}

QCoro::Task<> MeetingTranscriber::start()
{
    if (!canStart())
        co_return;
    const std::stop_token alive = m_lifetime.get_token();
    setPhase(Phase::Starting);
    if (m_requestMicrophone) {
        const bool isAllowed = co_await m_requestMicrophone();
        throwIfCancelled(alive);
        if (!isAllowed) {
            setError(Localization::text(u"Нет доступа к микрофону. Разрешите его в Системных настройках → "
                                        "Конфиденциальность → Микрофон."));
            setPhase(Phase::Idle);
            co_return;
        }
    }
    clearResult();
    RecordedMeeting meeting;
    if (const std::optional<WhisperModel> model = m_models.resolved(m_settings.selectedModelID()))
        meeting.modelID = model->id;
    meeting.languageCode = m_settings.language().code;
    meeting.startedAt = QDateTime::currentDateTime();
    m_clock.start();

    Recorder recorder;
    QString failure;
    try {
        recorder = co_await begin(&meeting, alive);
    } catch (const std::exception &error) {
        failure = QString::fromUtf8(error.what());
    }
    throwIfCancelled(alive);
    if (recorder && !m_isQuitting) {
        m_meeting = meeting;
        showRecording(recorder);
        co_return;
    }
    recorder.reset();
    if (!meeting.audioFileName.isEmpty()) {
        co_await m_recordings.discard(meeting);
        throwIfCancelled(alive);
    }
    if (!m_isQuitting)
        setError(Localization::text(u"Не удалось начать запись: ") + failure);
    setPhase(Phase::Idle);
}

QCoro::Task<MeetingTranscriber::Recorder> MeetingTranscriber::begin(RecordedMeeting *meeting,
                                                                    std::stop_token alive)
{
    *meeting = co_await m_recordings.create(*meeting);
    throwIfCancelled(alive);
    auto recorder =
        std::make_shared<MeetingRecorder>(m_makeSource(), m_recordings.audioPath(*meeting), m_freeSpace);
    co_await recorder->start();
    co_return recorder;
}

void MeetingTranscriber::showRecording(const Recorder &recorder)
{
    m_recorder = recorder;
    m_lastRecorder = recorder;
    connect(recorder.get(), &MeetingRecorder::levelChanged, this, &MeetingTranscriber::levelChanged);
    connect(recorder.get(), &MeetingRecorder::warningChanged, this,
            [this] { setStatus(recordingStatus(*m_recorder)); });
    m_elapsedTimer.start();
    setStatus(recordingStatus(*recorder));
    setPhase(Phase::Recording);
}

MeetingTranscriber::Recorder MeetingTranscriber::takeRecorder()
{
    const Recorder recorder = std::exchange(m_recorder, nullptr);
    recorder->disconnect(this);
    m_elapsedTimer.stop();
    m_meeting.durationMs = m_clock.elapsed();
    setElapsed(static_cast<double>(m_meeting.durationMs) / 1000);
    Q_EMIT levelChanged();
    return recorder;
}

void MeetingTranscriber::stop()
{
    if (!isRunning())
        return;
    const Recorder recorder = takeRecorder();
    beginTranscribing(Localization::text(u"Подготовка записи…"));
    spawn(completeAndTranscribe(recorder, m_meeting, m_cancellation.get_token()));
}

void MeetingTranscriber::beginTranscribing(const QString &status)
{
    m_cancellation = std::stop_source();
    setStatus(status);
    setPhase(Phase::Transcribing);
}

QCoro::Task<> MeetingTranscriber::completeAndTranscribe(Recorder recorder, RecordedMeeting meeting,
                                                        std::stop_token cancelled)
{
    const std::stop_token alive = m_lifetime.get_token();
    const bool isWhole = co_await recorder->finish();
    recorder.reset();
    throwIfCancelled(alive);
    const bool isStillShown = !cancelled.stop_requested() || phase() == Phase::Idle;
    if (!isWhole && isStillShown)
        setError(Localization::text(u"Запись сохранена частично — возможно, на диске не хватило места."));
    co_await transcribe(meeting, nullptr, cancelled);
}

QCoro::Task<> MeetingTranscriber::transcribe(RecordedMeeting meeting, EngineTurns::Turn turn,
                                             std::stop_token cancelled)
{
    const std::stop_token alive = m_lifetime.get_token();
    const AnyStop either(alive, cancelled);
    std::optional<QList<DisplaySegment>> segments;
    QString failure;
    try {
        throwIfCancelled(cancelled);
        segments = co_await recognise(&meeting, &turn, either.token());
    } catch (const std::exception &error) {
        failure = QString::fromUtf8(error.what());
    }
    throwIfCancelled(alive);
    turn.reset(); // who sees that it ended may begin the next
    if (cancelled.stop_requested()) {
        if (meeting.audioFileName != m_keptForNextStart)
            m_recordings.forget(meeting);
        co_return;
    }
    if (!segments) {
        fail(meeting, failure);
        co_return;
    }
    const bool isSaved = publish(meeting, *segments);
    if (isSaved) {
        // The marker stays until the record is on the disk: without either the recording would be lost.
        co_await m_history.flush();
        throwIfCancelled(alive);
        if (!m_history.lastError().isEmpty()) {
            setError(m_history.lastError());
            co_return;
        }
    }
    m_recordings.forget(meeting);
}

QCoro::Task<QList<DisplaySegment>>
MeetingTranscriber::recognise(RecordedMeeting *meeting, EngineTurns::Turn *turn, std::stop_token stop)
{
    if (!*turn)
        *turn = m_turns.take();
    if (!*turn) {
        setStatus(EngineTurns::waitText());
        *turn = co_await m_turns.wait(stop);
        throwIfCancelled(stop);
    }
    m_models.refresh(); // it may have been deleted during the meeting
    const std::optional<WhisperModel> model = m_models.resolved(meeting->modelID);
    if (!model)
        throw Error(Localization::text(u"Модель распознавания недоступна."));
    meeting->modelID = model->id; // another one where the chosen one is gone
    setStatus(transcribingStatus(elapsed()));
    using Speakers = TranscriptPipeline::SpeakerDetection;
    const Transcript transcript =
        co_await m_pipeline.run({.audioPath = m_recordings.audioPath(*meeting),
                                 .model = {.id = model->id, .path = m_models.localPath(*model)},
                                 .language = meeting->languageCode,
                                 .speakers = m_settings.detectSpeakers() ? Speakers::On : Speakers::Off,
                                 .medium = TranscriptPipeline::Medium::Meeting},
                                Progress(), stop);
    co_return transcript.segments;
}

bool MeetingTranscriber::publish(const RecordedMeeting &meeting, const QList<DisplaySegment> &segments)
{
    const TranscriptRecord record = recordOf(meeting, segments);
    const bool hasSpeech = !record.text.isEmpty();
    if (hasSpeech)
        m_history.add(record);
    setResult(segments, hasSpeech ? record.id : QUuid());
    setStatus(hasSpeech ? Localization::text(u"Совещание сохранено · ") + QString::number(segments.size()) +
                              Localization::text(u" сегментов · аудио в истории")
                        : Localization::text(u"Готово · речь не распознана (запись сохранена)"));
    setPhase(Phase::Idle);
    return hasSpeech;
}

void MeetingTranscriber::fail(const RecordedMeeting &meeting, const QString &error)
{
    setError(error);
    setStatus(Localization::text(u"Ошибка расшифровки (запись сохранена: ") + meeting.audioFileName + u')');
    m_recordings.offer(meeting);
    setPhase(Phase::Idle);
}

void MeetingTranscriber::cancelTranscription()
{
    if (!isTranscribing())
        return;
    m_cancellation.request_stop();
    setStatus(Localization::text(u"Расшифровка отменена · аудиозапись сохранена"));
    setPhase(Phase::Idle);
}

void MeetingTranscriber::reset()
{
    if (phase() != Phase::Idle)
        return;
    clearResult();
    setStatus({});
}

QCoro::Task<> MeetingTranscriber::finishForQuit()
{
    const std::stop_token alive = m_lifetime.get_token();
    m_isQuitting = true;
    if (isRunning() || isTranscribing())
        m_keptForNextStart = m_meeting.audioFileName;
    m_cancellation.request_stop();
    if (isRunning())
        spawn(completeAndTranscribe(takeRecorder(), m_meeting, m_cancellation.get_token()));
    if (phase() != Phase::Starting)
        setPhase(Phase::Idle);
    const QDeadlineTimer patience(quitPatience);
    while ((phase() == Phase::Starting || !m_lastRecorder.expired()) && !patience.hasExpired()) {
        co_await sleepFor(quitInterval);
        throwIfCancelled(alive);
    }
}

void MeetingTranscriber::transcribeLeftover(const QString &audioFileName)
{
    const std::optional<RecordedMeeting> meeting = m_recordings.leftover(audioFileName);
    if (!meeting || phase() != Phase::Idle || m_isQuitting)
        return;
    EngineTurns::Turn turn = m_turns.take();
    if (!turn) {
        setError(EngineTurns::waitText());
        return;
    }
    m_meeting = *meeting;
    clearResult();
    setElapsed(static_cast<double>(m_meeting.durationMs) / 1000);
    beginTranscribing(transcribingStatus(elapsed()));
    spawn(transcribe(m_meeting, std::move(turn), m_cancellation.get_token()));
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

} // namespace orvane
