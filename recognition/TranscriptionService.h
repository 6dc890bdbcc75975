#pragma once

#include "base/Operation.h"
#include "base/Scope.h"
#include "engine/EngineTurns.h"
#include "recognition/TranscriptPipeline.h"
#include "recognition/WhisperServerEngine.h"

#include <QObject>
#include <QUuid>

#include <QCoroTask>

#include <functional>
#include <optional>

namespace orvane {

/// Transcribes audio and video files, stores what was recognised and publishes stage, progress and result.
/// One for the whole program. Main thread.
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
    using SpeakerDetection = TranscriptPipeline::SpeakerDetection;
    enum class History { Save, Skip };

    struct Request
    {
        QString audioPath;
        ModelFile model;
        /// A language code or "auto".
        QString language;
        SpeakerDetection speakers = SpeakerDetection::Off;
        History history = History::Save;
        /// The record's when the audio is no file of the user's; empty to take the file's name.
        QString title = {};
    };

    struct Result
    {
        Transcript transcript;
        /// The history's record of it; none when it was not to be stored or there was nothing to store.
        std::optional<QUuid> savedID = std::nullopt;
    };

    /// Stores a finished transcription in the history; none when there was nothing worth storing.
    using RecordSaver = std::function<std::optional<QUuid>(const Request &, const Transcript &)>;

    struct Collaborators
    {
        WhisperServerEngine &engine;
        TranscriptPipeline &pipeline;
        const EngineTurns &turns;
        RecordSaver saveRecord;
    };

    explicit TranscriptionService(Collaborators collaborators, QObject *parent = nullptr);
    /// Cancels what runs without waiting for it.
    ~TranscriptionService() override;

    [[nodiscard]] bool isWorking() const { return m_operation.isRunning(); }
    [[nodiscard]] bool isBusyDetached() const { return m_detached.isRunning(); }
    /// The current stage in the interface language.
    [[nodiscard]] QString statusText() const { return m_operation.status(); }
    /// From 0 to 1; 1 only when done.
    [[nodiscard]] double progress() const { return m_operation.progress(); }
    /// Estimated milliseconds to the result; −1 while unknown.
    [[nodiscard]] qint64 remainingMs() const { return m_operation.remainingMs(); }
    /// The segments' texts, joined as they stand.
    [[nodiscard]] QString transcript() const { return m_transcript; }
    [[nodiscard]] const QList<DisplaySegment> &segments() const { return m_segments; }
    /// What went wrong last, one sentence; empty when nothing did.
    [[nodiscard]] QString errorText() const { return m_operation.error(); }
    /// The history record of the last result; null before the first.
    [[nodiscard]] QUuid lastSavedID() const { return m_lastSavedID; }
    /// Changes with every reset(), so that views can clear themselves.
    [[nodiscard]] QUuid resetToken() const { return m_resetToken; }

    /// Transcribes and publishes. Throws what errorText() tells afterwards, also when another operation has
    /// the engine; Cancelled after cancel(). A call while one is working is refused and changes nothing.
    QCoro::Task<Result> transcribe(Request request);

    /// Transcribes for the caller alone, who alone hears of the progress, and saves nothing. Throws, at once
    /// when another operation has the engine, and Cancelled when it is stopped.
    QCoro::Task<Transcript> transcribeDetached(Request request, std::stop_token stop = {},
                                               Progress progress = {});

    /// Begins to load the engine with a model; errors will show when it is needed.
    void prewarm(const QString &modelPath);

    /// Ends the running transcription and frees the engine.
    void cancel();

    /// Clears the published result, unless a transcription is running.
    void reset();

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
    QCoro::Task<Result> transcribed(Request request, Progress progress, std::stop_token stop);
    QCoro::Task<Transcript> recognised(Request request, Progress progress, std::stop_token stop);
    [[nodiscard]] std::optional<QUuid> publish(const Request &request, const Transcript &transcript);

    WhisperServerEngine &m_engine;
    TranscriptPipeline &m_pipeline;
    const EngineTurns &m_turns;
    const RecordSaver m_saveRecord;

    QString m_transcript;
    QList<DisplaySegment> m_segments;
    QUuid m_lastSavedID;
    QUuid m_resetToken = QUuid::createUuid();

    Operation m_operation;
    Operation m_detached;
    Scope m_scope;
};

} // namespace orvane
