#pragma once

#include "audio/AudioDecoder.h"
#include "engine/EngineTurns.h"
#include "models/ModelFile.h"
#include "recognition/RecognitionEstimate.h"
#include "recognition/WhisperServerEngine.h"
#include "transcript/DisplaySegment.h"

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>
#include <QUuid>

#include <QCoroTask>

#include <functional>
#include <optional>

namespace orvane {

/// Transcribes audio and video files: decodes what the recognition server cannot read itself, has it
/// recognised, cleans the segments, labels the speakers if asked, and publishes stage, progress and
/// result. One for the whole program. Main thread.
class TranscriptionService : public QObject
{
    Q_OBJECT
    Q_PROPERTY(bool isWorking READ isWorking NOTIFY isWorkingChanged)
    Q_PROPERTY(bool isBusyDetached READ isBusyDetached NOTIFY isBusyDetachedChanged)
    Q_PROPERTY(QString statusText READ statusText NOTIFY statusTextChanged)
    Q_PROPERTY(double progress READ progress NOTIFY progressChanged)
    Q_PROPERTY(qint64 remainingMs READ remainingMs NOTIFY progressChanged)
    Q_PROPERTY(QString transcript READ transcript NOTIFY resultChanged)
    Q_PROPERTY(QString errorText READ errorText NOTIFY errorTextChanged)
    Q_PROPERTY(QUuid lastSavedID READ lastSavedID NOTIFY lastSavedIDChanged)
    Q_PROPERTY(QUuid resetToken READ resetToken NOTIFY resetTokenChanged)

public:
    enum class SpeakerDetection { Off, On };
    enum class History { Save, Skip };

    struct Request
    {
        QString audioPath;
        ModelFile model;
        /// A language code or "auto".
        QString language;
        SpeakerDetection speakers = SpeakerDetection::Off;
        History history = History::Save;
    };

    /// Numbers the voices in the segments of an audio file, at most that many, unless it is stopped.
    using SpeakerLabeller = std::function<QCoro::Task<QList<DisplaySegment>>(QString, QList<DisplaySegment>,
                                                                             int, std::stop_token)>;
    /// Stores a finished transcription in the history; none when there was nothing worth storing.
    using RecordSaver = std::function<std::optional<QUuid>(const Request &, const QList<DisplaySegment> &,
                                                           const QString &transcript)>;

    struct Collaborators
    {
        WhisperServerEngine &engine;
        const AudioDecoder &decoder;
        const EngineTurns &turns;
        RecordSaver saveRecord;
        /// May be empty: segments then stay without speakers.
        SpeakerLabeller labelSpeakers;
    };

    explicit TranscriptionService(Collaborators collaborators, QObject *parent = nullptr);
    /// Tells its work on the global thread pool to stop without waiting: the decoder must outlive that.
    ~TranscriptionService() override;

    [[nodiscard]] bool isWorking() const { return m_isWorking; }
    [[nodiscard]] bool isBusyDetached() const { return m_isBusyDetached; }
    /// The current stage in the interface language.
    [[nodiscard]] QString statusText() const { return m_statusText; }
    /// From 0 to 1; 1 only when done.
    [[nodiscard]] double progress() const { return m_progress; }
    /// Estimated milliseconds to the result; −1 while unknown.
    [[nodiscard]] qint64 remainingMs() const { return m_remainingMs; }
    /// The segments' texts, joined as they stand.
    [[nodiscard]] QString transcript() const { return m_transcript; }
    [[nodiscard]] const QList<DisplaySegment> &segments() const { return m_segments; }
    /// What went wrong last, one sentence; empty when nothing did.
    [[nodiscard]] QString errorText() const { return m_errorText; }
    /// The history record of the last result; null before the first.
    [[nodiscard]] QUuid lastSavedID() const { return m_lastSavedID; }
    /// Changes with every reset(), so that views can clear themselves.
    [[nodiscard]] QUuid resetToken() const { return m_resetToken; }

    /// Transcribes and publishes; never throws. A call while one is working does nothing; while
    /// another operation has the engine it is refused with an error.
    QCoro::Task<> transcribe(Request request);

    /// Transcribes for the caller alone and saves nothing. Throws, at once when another operation has the
    /// engine, and Cancelled when it is stopped.
    QCoro::Task<QList<DisplaySegment>> transcribeDetached(Request request, std::stop_token stop = {});

    /// Begins to load the engine with a model; errors will show when it is needed.
    void prewarm(const QString &modelPath);

    /// Drops the running transcription. What the server was given it still computes, unseen.
    void cancel();

    /// Clears the published result, unless a transcription is running.
    void reset();

    void requestEngineRestart() { m_engine.requestRestart(); }

Q_SIGNALS:
    void isWorkingChanged();
    void isBusyDetachedChanged();
    void statusTextChanged();
    void progressChanged();
    void resultChanged();
    void errorTextChanged();
    void lastSavedIDChanged();
    void resetTokenChanged();

private:
    /// Where a pipeline tells how far it is; the detached one tells nobody.
    enum class Audience { Published, Nobody };

    QCoro::Task<QList<DisplaySegment>> run(Request request, Audience audience, std::stop_token stop);
    QCoro::Task<QList<RawSegment>> recognise(Request request, Audience audience, std::stop_token stop);
    QCoro::Task<QList<RawSegment>> recogniseDirectly(Request request, Audience audience,
                                                     std::stop_token stop);
    QCoro::Task<QList<RawSegment>> recogniseDecoded(Request request, Audience audience, std::stop_token stop);

    void publish(const Request &request, const QList<DisplaySegment> &segments);
    void setWorking(bool working);
    void setStatus(const QString &text);
    void setError(const QString &text);
    void setProgress(double progress, qint64 remainingMs);

    /// Nothing of the recording is recognised yet.
    void beginProgress();
    /// The time of the engine's work from now on.
    [[nodiscard]] QElapsedTimer startRecognition(Audience audience);
    QCoro::Task<> estimateFromFile(Request request, std::stop_token stop);
    void beginEstimate(const QString &modelPath, std::chrono::milliseconds audio);
    void updateEstimate();

    WhisperServerEngine &m_engine;
    const AudioDecoder &m_decoder;
    const EngineTurns &m_turns;
    const RecordSaver m_saveRecord;
    const SpeakerLabeller m_labelSpeakers;

    RecognitionEstimate m_estimate;
    QElapsedTimer m_recognitionTime;
    /// Of the recording that is being recognised, once it is known.
    std::optional<std::chrono::milliseconds> m_audioLength;
    std::chrono::milliseconds m_expected{0};
    QTimer m_estimateTimer;

    bool m_isWorking = false;
    bool m_isBusyDetached = false;
    QString m_statusText;
    double m_progress = 0;
    qint64 m_remainingMs = -1;
    QString m_transcript;
    QList<DisplaySegment> m_segments;
    QString m_errorText;
    QUuid m_lastSavedID;
    QUuid m_resetToken = QUuid::createUuid();

    std::stop_source m_cancellation;
    std::stop_source m_lifetime;
};

} // namespace orvane
