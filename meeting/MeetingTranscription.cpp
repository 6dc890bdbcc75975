#include "meeting/MeetingTranscription.h"

#include "base/localization/Localization.h"

using namespace Qt::StringLiterals;

namespace orvane {

MeetingTranscription::MeetingTranscription(const Collaborators &collaborators)
    : m_models(collaborators.models),
      m_settings(collaborators.settings),
      m_turns(collaborators.turns),
      m_pipeline(collaborators.pipeline)
{}

bool MeetingTranscription::hasModel() const
{
    return m_models.resolved(m_settings.selectedModelID()).has_value();
}

RecordedMeeting MeetingTranscription::newMeeting() const
{
    RecordedMeeting meeting;
    if (const std::optional<WhisperModel> model = m_models.resolved(m_settings.selectedModelID()))
        meeting.modelID = model->id;
    meeting.languageCode = m_settings.language().code;
    meeting.startedAt = QDateTime::currentDateTime();
    return meeting;
}

QString MeetingTranscription::statusOf(const RecordedMeeting &meeting)
{
    const qint64 seconds = meeting.durationMs / 1000;
    return Localization::text(u"Расшифровка записи (%1:%2)…")
        .arg(seconds / 60)
        .arg(seconds % 60, 2, 10, QChar(u'0'));
}

QCoro::Task<MeetingTranscription::Result>
MeetingTranscription::run(RecordedMeeting meeting, QString audioPath, Progress progress, std::stop_token stop)
{
    EngineTurns::Turn turn = m_turns.take();
    if (!turn) {
        progress.setStatus(EngineTurns::waitText());
        turn = co_await m_scope(m_turns.wait(stop), stop);
    }
    m_models.refresh(); // it may have been deleted during the meeting
    const std::optional<WhisperModel> model = m_models.resolved(meeting.modelID);
    if (!model)
        throw Error(Localization::text(u"Модель распознавания недоступна."));
    meeting.modelID = model->id;
    progress.setStatus(statusOf(meeting));
    const Transcript transcript =
        co_await m_scope(recognise(*model, audioPath, meeting.languageCode, progress, stop), stop);
    co_return Result{.meeting = meeting, .transcript = transcript};
}

QCoro::Task<Transcript> MeetingTranscription::recognise(WhisperModel model, QString audioPath,
                                                        QString language, Progress progress,
                                                        std::stop_token stop)
{
    try {
        Transcript transcript =
            co_await m_scope(m_pipeline.run({.audioPath = audioPath,
                                             .model = {.id = model.id, .path = m_models.localPath(model)},
                                             .language = language,
                                             .medium = TranscriptPipeline::Medium::Meeting},
                                            progress.withoutStatus(), stop),
                             stop);
        if (m_settings.detectSpeakers())
            transcript = co_await m_scope(m_pipeline.label(transcript, audioPath, stop), stop);
        co_return transcript;
    } catch (const Gone &) {
        throw;
    } catch (const Cancelled &) {
        if (stop.stop_requested())
            throw;
    }
    throw Error(Localization::text(u"Движок распознавания был остановлен."));
}

} // namespace orvane
