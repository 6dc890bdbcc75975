#pragma once

#include "engine/EngineTurns.h"
#include "history/HistoryStore.h"
#include "meeting/MeetingRecorder.h"
#include "meeting/MeetingRecordings.h"
#include "meeting/MeetingState.h"
#include "models/ModelManager.h"
#include "recognition/TranscriptPipeline.h"
#include "settings/AppSettings.h"

#include <QElapsedTimer>

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
    Q_PROPERTY(QString leftoverNotice READ leftoverNotice NOTIFY leftoversChanged)

public:
    /// Asks for access to the microphone; false when it is refused.
    using AccessRequest = std::function<QCoro::Task<bool>()>;

    struct Collaborators
    {
        ModelManager &models;
        const AppSettings &settings;
        HistoryStore &history;
        TranscriptPipeline &pipeline;
        const EngineTurns &turns;
        /// The microphone, for one recording.
        std::function<std::unique_ptr<MeetingSource>()> makeSource;
        /// Empty where the system asks for no permission.
        AccessRequest requestMicrophone = {};
        MeetingRecorder::FreeSpace freeSpace = freeSpaceOfDisk;
    };

    MeetingTranscriber(Collaborators collaborators, const QString &recordingsFolder,
                       QObject *parent = nullptr);
    /// A recording that runs is completed like by finishForQuit(), but waits for the disk.
    ~MeetingTranscriber() override;

    [[nodiscard]] bool canStart() const { return startRefusal().isEmpty(); }
    /// Of the recording in progress, see MeetingSource; 0 and empty without one.
    [[nodiscard]] float level() const;
    [[nodiscard]] QList<float> waveform() const;
    /// Why the operation would do nothing now, one sentence in the interface language; empty when it would.
    [[nodiscard]] QString startRefusal() const;
    [[nodiscard]] QString stopRefusal() const;
    [[nodiscard]] QString cancelRefusal() const;
    [[nodiscard]] QString leftoverRefusal() const;

    /// Begins to record; nothing unless canStart(). Ends when the recording runs or errorText tells why not.
    QCoro::Task<> start();
    /// Ends the recording and has it transcribed.
    void stop();
    /// Abandons the transcription; the audio stays on the disk and is not offered again.
    void cancelTranscription();
    /// Clears what is published, unless something is in progress.
    void reset();

    /// To be awaited before the program ends, once. Completes a recording and abandons a transcription; the
    /// next start offers both. Nothing can be started afterwards.
    QCoro::Task<> finishForQuit();

    /// To be called once, at the start: looks for recordings that earlier runs left behind.
    QCoro::Task<> findLeftovers() { return m_recordings.findLeftovers(); }
    /// Recordings that are neither transcribed nor abandoned, see MeetingRecordings.
    [[nodiscard]] const QList<RecordedMeeting> &leftovers() const { return m_recordings.leftovers(); }
    /// Offers the transcription of the first of them; empty without any.
    [[nodiscard]] QString leftoverNotice() const { return m_recordings.notice(); }
    /// Transcribes one of them, by its audio file's name, into a record like that of any meeting; it is
    /// offered until that has succeeded. Refused with an error while another operation has the engine.
    void transcribeLeftover(const QString &audioFileName);
    /// Does not offer it any more; its audio stays on the disk.
    void dismissLeftover(const QString &audioFileName);

    [[nodiscard]] static qint64 freeSpaceOfDisk(const QString &folder);

Q_SIGNALS:
    void levelChanged();
    void leftoversChanged();

private:
    using Recorder = std::shared_ptr<MeetingRecorder>;

    [[nodiscard]] QCoro::Task<Recorder> begin(RecordedMeeting *meeting, std::stop_token alive);
    void showRecording(const Recorder &recorder);
    /// The recording in progress, which ends now.
    [[nodiscard]] Recorder takeRecorder();
    void beginTranscribing(const QString &status);
    QCoro::Task<> completeAndTranscribe(Recorder recorder, RecordedMeeting meeting,
                                        std::stop_token cancelled);
    QCoro::Task<> transcribe(RecordedMeeting meeting, EngineTurns::Turn turn, std::stop_token cancelled);
    [[nodiscard]] QCoro::Task<QList<DisplaySegment>> recognise(RecordedMeeting *meeting,
                                                               EngineTurns::Turn *turn, std::stop_token stop);
    /// Whether there was anything to save.
    bool publish(const RecordedMeeting &meeting, const QList<DisplaySegment> &segments);
    void fail(const RecordedMeeting &meeting, const QString &error);

    ModelManager &m_models;
    const AppSettings &m_settings;
    HistoryStore &m_history;
    const EngineTurns &m_turns;
    const std::function<std::unique_ptr<MeetingSource>()> m_makeSource;
    const AccessRequest m_requestMicrophone;
    const MeetingRecorder::FreeSpace m_freeSpace;
    TranscriptPipeline &m_pipeline;

    MeetingRecordings m_recordings;

    bool m_isQuitting = false;
    /// What quitting interrupted: no user has abandoned it.
    QString m_keptForNextStart;
    /// The one in progress.
    Recorder m_recorder;
    /// The one that may still be completing its file.
    std::weak_ptr<MeetingRecorder> m_lastRecorder;
    RecordedMeeting m_meeting;
    QElapsedTimer m_clock;
    QTimer m_elapsedTimer;
    std::stop_source m_cancellation;
    std::stop_source m_lifetime;
};

} // namespace orvane
