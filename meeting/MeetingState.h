#pragma once

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
    Q_PROPERTY(QString statusText READ statusText NOTIFY statusTextChanged)
    Q_PROPERTY(QString errorText READ errorText NOTIFY errorTextChanged)
    Q_PROPERTY(QString transcript READ transcript NOTIFY resultChanged)
    Q_PROPERTY(QUuid lastRecordID READ lastRecordID NOTIFY resultChanged)

public:
    /// A recording is in progress.
    [[nodiscard]] bool isRunning() const { return m_phase == Phase::Recording; }
    /// A recording is being completed or transcribed.
    [[nodiscard]] bool isTranscribing() const { return m_phase == Phase::Transcribing; }
    /// Seconds of recording so far, or of the recording that is transcribed.
    [[nodiscard]] double elapsed() const { return m_elapsed; }
    /// One line in the interface language.
    [[nodiscard]] QString statusText() const { return m_statusText; }
    /// What went wrong last, one sentence; empty when nothing did.
    [[nodiscard]] QString errorText() const { return m_errorText; }
    /// The result of the last transcription.
    [[nodiscard]] const QList<DisplaySegment> &segments() const { return m_segments; }
    /// The segments' texts, joined as they stand.
    [[nodiscard]] QString transcript() const;
    /// The history record of the last result; null without one.
    [[nodiscard]] QUuid lastRecordID() const { return m_lastRecordID; }

Q_SIGNALS:
    void stateChanged();
    void elapsedChanged();
    void statusTextChanged();
    void errorTextChanged();
    void resultChanged();

protected:
    enum class Phase { Idle, Starting, Recording, Transcribing };

    using QObject::QObject;

    [[nodiscard]] Phase phase() const { return m_phase; }
    void setPhase(Phase phase);
    void setElapsed(double seconds);
    void setStatus(const QString &text);
    void setError(const QString &text);
    void setResult(const QList<DisplaySegment> &segments, const QUuid &recordID);
    /// No result, no error, no time.
    void clearResult();

private:
    Phase m_phase = Phase::Idle;
    double m_elapsed = 0;
    QString m_statusText;
    QString m_errorText;
    QList<DisplaySegment> m_segments;
    QUuid m_lastRecordID;
};

} // namespace orvane
