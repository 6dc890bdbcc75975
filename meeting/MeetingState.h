#pragma once

#include "base/Operation.h"
#include "transcript/DisplaySegment.h"

#include <QList>
#include <QObject>
#include <QString>
#include <QUuid>

namespace orvane {

/// What is published of the meeting that is recorded or transcribed, or was last. Main thread.
class MeetingState : public QObject
{
    Q_OBJECT
    Q_PROPERTY(bool isRunning READ isRunning NOTIFY stateChanged)
    Q_PROPERTY(bool isTranscribing READ isTranscribing NOTIFY stateChanged)
    Q_PROPERTY(double elapsed READ elapsed NOTIFY elapsedChanged)
    Q_PROPERTY(double progress READ progress NOTIFY progressChanged)
    Q_PROPERTY(qint64 remainingMs READ remainingMs NOTIFY progressChanged)
    Q_PROPERTY(QString statusText READ statusText NOTIFY statusTextChanged)
    Q_PROPERTY(QString errorText READ errorText NOTIFY errorTextChanged)
    Q_PROPERTY(QString transcript READ transcript NOTIFY resultChanged)
    Q_PROPERTY(QUuid lastRecordID READ lastRecordID NOTIFY resultChanged)
    Q_PROPERTY(Outcome outcome READ outcome NOTIFY outcomeChanged)

public:
    /// What became of the last meeting. Where something went wrong errorText() says what.
    enum class Outcome {
        /// There was none, or one is in progress.
        None,
        /// Nothing was recorded.
        NotStarted,
        Saved,
        /// In the history, but a part of its sound is missing.
        Partial,
        /// Recorded, without a record in the history.
        NoSpeech,
        /// Recorded; the transcription is offered again.
        Failed,
        /// Recorded; the user gave the transcription up.
        Cancelled,
    };
    Q_ENUM(Outcome)

    /// A recording is in progress.
    [[nodiscard]] bool isRunning() const { return m_stage == Stage::Recording && !isTranscribing(); }
    /// A recording is being completed or transcribed.
    [[nodiscard]] bool isTranscribing() const { return m_operation.isRunning(); }
    /// Why there is nothing to stop or to cancel now, one sentence in the interface language; empty when
    /// there is.
    [[nodiscard]] QString stopRefusal() const;
    [[nodiscard]] QString cancelRefusal() const;
    /// Seconds of recording so far, or of the recording that is transcribed.
    [[nodiscard]] double elapsed() const { return m_elapsed; }
    /// How much of the transcription is done, 0…1; 1 only at its end.
    [[nodiscard]] double progress() const { return m_operation.progress(); }
    /// To the end of the transcription; −1 while unknown.
    [[nodiscard]] qint64 remainingMs() const { return m_operation.remainingMs(); }
    /// One line in the interface language.
    [[nodiscard]] QString statusText() const { return m_operation.status(); }
    /// What went wrong last, one sentence; empty when nothing did.
    [[nodiscard]] QString errorText() const { return m_operation.error(); }
    /// The result of the last transcription.
    [[nodiscard]] const QList<DisplaySegment> &segments() const { return m_segments; }
    /// The segments' texts, joined as they stand.
    [[nodiscard]] QString transcript() const;
    /// The history record of the last result; null without one.
    [[nodiscard]] QUuid lastRecordID() const { return m_lastRecordID; }
    /// Changes last: everything else is published by then.
    [[nodiscard]] Outcome outcome() const { return m_outcome; }

Q_SIGNALS:
    void stateChanged();
    void elapsedChanged();
    void progressChanged();
    void statusTextChanged();
    void errorTextChanged();
    void resultChanged();
    void outcomeChanged();

protected:
    enum class Stage { Idle, Starting, Recording };

    explicit MeetingState(QObject *parent);

    /// Completes and transcribes recordings.
    [[nodiscard]] Operation &operation() { return m_operation; }
    [[nodiscard]] bool isIdle() const { return m_stage == Stage::Idle && !isTranscribing(); }
    void setStage(Stage stage);
    void setElapsed(qint64 milliseconds);
    /// Also by the status. A null id when nothing was said.
    void showResult(const QList<DisplaySegment> &segments, const QUuid &recordID, const QString &damage);
    void setOutcome(Outcome outcome);
    /// No result, no error, no time.
    void clearResult();

private:
    void setResult(const QList<DisplaySegment> &segments, const QUuid &recordID);

    Operation m_operation;
    Stage m_stage = Stage::Idle;
    double m_elapsed = 0;
    QList<DisplaySegment> m_segments;
    QUuid m_lastRecordID;
    Outcome m_outcome = Outcome::None;
};

} // namespace orvane
