#pragma once

#include "base/Operation.h"
#include "base/Scope.h"
#include "models/ModelFile.h"
#include "recognition/TranscriptionService.h"

#include <QObject>
#include <QString>
#include <QUuid>

#include <QCoroTask>

#include <functional>
#include <stop_token>

namespace orvane {

class HistoryStore;
class TextCorrectionService;

/// What is made of a record of the history afterwards: its text corrected, a protocol, answers to questions
/// about it, a new transcription of its audio. The outcome is stored in the record. Main thread.
///
/// Operations return the text that was stored. When none was, they throw what error() tells, or Cancelled.
/// One runs at a time: a call during another is refused and changes nothing.
class RecordProcessor : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QUuid record READ record NOTIFY recordChanged)
    Q_PROPERTY(double progress READ progress NOTIFY progressChanged)
    Q_PROPERTY(qint64 remainingMs READ remainingMs NOTIFY progressChanged)
    Q_PROPERTY(QString error READ error NOTIFY errorChanged)

public:
    /// They outlive this object.
    struct Collaborators
    {
        HistoryStore &history;
        TextCorrectionService &corrector;
        TranscriptionService &transcriber;
        QString recordingsFolder;
    };

    explicit RecordProcessor(Collaborators collaborators, QObject *parent = nullptr);
    /// Cancels what runs.
    ~RecordProcessor() override;

    /// The record that is being worked on; null when none is.
    [[nodiscard]] QUuid record() const { return m_operation.isRunning() ? m_record : QUuid(); }
    /// How much of the running operation is done, 0…1.
    [[nodiscard]] double progress() const { return m_operation.progress(); }
    /// To the end of the running operation; negative while unknown.
    [[nodiscard]] qint64 remainingMs() const { return m_operation.remainingMs(); }
    /// What went wrong last, one sentence; empty when nothing has since an operation started. A transcription
    /// that succeeded tells here from where on its audio is damaged.
    [[nodiscard]] QString error() const { return m_operation.error(); }

    /// On the language model in that file, or on the one that the settings choose.
    QCoro::Task<QString> correct(QUuid id, QString modelFile = {});
    QCoro::Task<QString> summarize(QUuid id, QString modelFile = {});
    QCoro::Task<QString> ask(QUuid id, QString question, QString modelFile = {});

    struct Recognition
    {
        ModelFile model;
        /// A language code or "auto".
        QString language;
        TranscriptionService::SpeakerDetection speakers = TranscriptionService::SpeakerDetection::Off;
    };
    /// Replaces the record's text and drops what was made of the old one; the log of events keeps both.
    QCoro::Task<QString> transcribeAnew(QUuid id, Recognition recognition);

    /// Ends the running operation; nothing is stored, and the next one may begin at once.
    void cancel() { m_operation.cancel(); }

Q_SIGNALS:
    void recordChanged();
    void progressChanged();
    void errorChanged();

private:
    /// What becomes of a record's text, on the language model and in the history.
    using Process = std::function<QCoro::Task<QString>(TextCorrectionService *, QString, std::stop_token)>;
    using Store = std::function<void(HistoryStore *, const QString &)>;

    QCoro::Task<QString> process(QUuid id, Process process, Store store);
    QCoro::Task<QString> processed(QUuid id, Process process, Store store, std::stop_token stop);
    QCoro::Task<QString> transcribed(QUuid id, Recognition recognition, Progress progress,
                                     std::stop_token stop);
    /// Throws Error when the record was deleted meanwhile.
    QCoro::Task<> requireStill(QUuid id, std::stop_token stop);
    QCoro::Task<QString> run(QUuid id, Operation::Work<QString> work);

    HistoryStore &m_history;
    TextCorrectionService &m_corrector;
    TranscriptionService &m_transcriber;
    const QString m_recordingsFolder;

    /// Of the last operation.
    QUuid m_record;
    Operation m_operation;
    Scope m_scope;
};

} // namespace orvane
