#pragma once

#include "audio/MicrophoneAccess.h"
#include "base/Holds.h"
#include "base/Scope.h"
#include "history/HistoryStore.h"
#include "meeting/MeetingRecorder.h"
#include "meeting/MeetingRecordings.h"
#include "meeting/MeetingState.h"
#include "meeting/MeetingTranscription.h"

namespace orvane {

/// Records meetings and, when one has ended, transcribes its audio as a whole and puts it into the history.
/// Whatever happens after a recording has begun, its audio stays on the disk: what a crash left behind is
/// offered at the next start. One for the whole program. Main thread.
class MeetingTranscriber : public MeetingState
{
    Q_OBJECT
    Q_PROPERTY(bool canStart READ canStart NOTIFY stateChanged)
    Q_PROPERTY(float level READ level NOTIFY levelChanged)
    Q_PROPERTY(QList<float> waveform READ waveform NOTIFY levelChanged)
    Q_PROPERTY(QString warning READ warning NOTIFY statusTextChanged)
    Q_PROPERTY(QString leftoverNotice READ leftoverNotice NOTIFY leftoversChanged)

public:
    /// See requestMicrophone.
    using AccessRequest = std::function<QCoro::Task<bool>(std::stop_token)>;

    struct Collaborators
    {
        ModelManager &models;
        const AppSettings &settings;
        HistoryStore &history;
        TranscriptPipeline &pipeline;
        const EngineTurns &turns;
        /// The microphone, for one recording.
        std::function<std::unique_ptr<MeetingSource>()> makeSource;
        AccessRequest requestMicrophone = orvane::requestMicrophone;
        MeetingRecorder::FreeSpace freeSpace = MeetingRecorder::freeSpaceOfDisk;
    };

    MeetingTranscriber(Collaborators collaborators, const QString &recordingsFolder,
                       QObject *parent = nullptr);
    /// A recording that runs is completed like by finishForQuit(), but waits for the disk.
    ~MeetingTranscriber() override;

    [[nodiscard]] bool canStart() const { return startRefusal().isEmpty(); }
    /// Of the recording in progress, see MeetingSource; 0 and empty without one.
    [[nodiscard]] float level() const;
    [[nodiscard]] QList<float> waveform() const;
    /// What the user should know of the recording in progress, as statusText() says it too; empty when there
    /// is nothing.
    [[nodiscard]] QString warning() const;
    /// Why the operation would do nothing now, one sentence in the interface language; empty when it would.
    [[nodiscard]] QString startRefusal() const;
    [[nodiscard]] QString leftoverRefusal() const;

    /// Begins to record; nothing unless canStart(). Ends when the recording runs or errorText tells why not.
    QCoro::Task<> start();
    /// Ends the recording and has it transcribed.
    void stop();
    /// Abandons the transcription; the audio stays on the disk. What was offered stays offered; a meeting
    /// that has just been recorded is not.
    void cancelTranscription();
    /// Clears what is published, unless something is in progress.
    void reset();

    /// To be awaited before the program ends, once. Completes a recording and abandons a transcription; the
    /// next start offers both. Nothing can be started afterwards.
    QCoro::Task<> finishForQuit();

    /// To be called once, at the start: looks for recordings that earlier runs left behind.
    QCoro::Task<> findLeftovers();
    /// Recordings that are neither transcribed nor abandoned, see MeetingRecordings.
    [[nodiscard]] const QList<RecordedMeeting> &leftovers() const { return m_recordings.leftovers(); }
    /// Offers the transcription of the first of them; empty without any.
    [[nodiscard]] QString leftoverNotice() const { return m_recordings.notice(); }
    /// Where the audio of one of them lies; empty when it is not one of them.
    [[nodiscard]] QString leftoverPath(const QString &audioFileName) const
    {
        return m_recordings.leftoverPath(audioFileName);
    }
    /// Transcribes one of them, by its audio file's name, into a record like that of any meeting; it is
    /// offered until that has succeeded. errorText tells why it cannot begin now.
    void transcribeLeftover(const QString &audioFileName);
    /// Does not offer it any more; its audio stays on the disk.
    void dismissLeftover(const QString &audioFileName);

Q_SIGNALS:
    void levelChanged();
    void leftoversChanged();

private:
    using Recorder = MeetingRecordings::Recorder;

    [[nodiscard]] QCoro::Task<Recorder> begin();
    void showRecording();

    [[nodiscard]] QCoro::Task<Outcome> completeAndTranscribe(RecordedMeeting meeting, Progress progress,
                                                             std::stop_token stop);
    /// Ends the recording. Returns why it is not whole, in the interface language; empty when it is.
    [[nodiscard]] QCoro::Task<QString> complete();
    /// Runs the work on a meeting as what is in progress and publishes what becomes of it.
    QCoro::Task<> process(RecordedMeeting meeting, Operation::Work<Outcome> work);
    [[nodiscard]] QCoro::Task<Outcome> transcribe(RecordedMeeting meeting, Progress progress,
                                                  std::stop_token stop);
    [[nodiscard]] Outcome publish(const MeetingTranscription::Result &result);
    QCoro::Task<> awaitSaving(RecordedMeeting meeting, QUuid recordID);

    const EngineTurns &m_turns;
    const std::function<std::unique_ptr<MeetingSource>()> m_makeSource;
    const AccessRequest m_requestMicrophone;
    const MeetingRecorder::FreeSpace m_freeSpace;

    MeetingTranscription m_transcription;
    MeetingRecordings m_recordings;

    /// Stopped when the program ends.
    std::stop_source m_quit;
    Recorder m_recorder;
    /// The meeting that is completed or transcribed, or was last.
    RecordedMeeting m_meeting;
    /// What finishForQuit() waits for: recordings that begin or are being completed.
    const Holds m_holds;
    Scope m_scope;
};

} // namespace orvane
