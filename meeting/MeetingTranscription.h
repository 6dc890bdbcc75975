#pragma once

#include "base/Operation.h"
#include "base/Scope.h"
#include "engine/EngineTurns.h"
#include "meeting/RecordedMeeting.h"
#include "models/ModelManager.h"
#include "recognition/TranscriptPipeline.h"
#include "settings/AppSettings.h"

namespace orvane {

/// From the finished audio of a meeting to what was said in it. Main thread.
class MeetingTranscription
{
public:
    struct Collaborators
    {
        ModelManager &models;
        const AppSettings &settings;
        const EngineTurns &turns;
        TranscriptPipeline &pipeline;
    };

    struct Result
    {
        /// Names the model that was used: another one where the chosen one is gone.
        RecordedMeeting meeting;
        Transcript transcript;
    };

    /// They outlive this object.
    explicit MeetingTranscription(const Collaborators &collaborators);

    /// Whether a model is there to transcribe with.
    [[nodiscard]] bool hasModel() const;
    /// One that begins now and is to be transcribed as it is chosen now.
    [[nodiscard]] RecordedMeeting newMeeting() const;

    /// Waits for its turn with the engine. Throws Error, one sentence, and Cancelled only when stopped.
    [[nodiscard]] QCoro::Task<Result> run(RecordedMeeting meeting, QString audioPath, Progress progress,
                                          std::stop_token stop);

    /// Such as "Расшифровка записи (1:15)…", in the interface language.
    [[nodiscard]] static QString statusOf(const RecordedMeeting &meeting);

private:
    [[nodiscard]] QCoro::Task<Transcript> recognise(WhisperModel model, QString audioPath, QString language,
                                                    Progress progress, std::stop_token stop);

    ModelManager &m_models;
    const AppSettings &m_settings;
    const EngineTurns &m_turns;
    TranscriptPipeline &m_pipeline;
    Scope m_scope;
};

} // namespace orvane
