#pragma once

#include "models/ModelFile.h"
#include "recognition/TranscriptionService.h"

#include <QObject>
#include <QString>
#include <QUuid>

#include <QCoroTask>

#include <functional>
#include <optional>
#include <stop_token>

namespace orvane {

class HistoryStore;
class TextCorrectionService;

/// What is made of a record of the history afterwards: its text corrected, a protocol, answers to questions
/// about it, a new transcription of its audio. The outcome is stored in the record. Main thread.
///
/// Operations never throw. They return the text that was stored; none when nothing was, and then error()
/// tells why, or is empty after a cancellation. One runs at a time: a call during another returns none at
/// once and changes nothing.
class RecordProcessor : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QUuid record READ record NOTIFY recordChanged)
    Q_PROPERTY(QString error READ error NOTIFY errorChanged)

public:
    using Text = std::optional<QString>;

    /// They outlive this object.
    struct Collaborators
    {
        HistoryStore &history;
        TextCorrectionService &corrector;
        TranscriptionService &transcriber;
        QString recordingsFolder;
    };

    explicit RecordProcessor(Collaborators collaborators, QObject *parent = nullptr);
    /// A running operation returns none.
    ~RecordProcessor() override;

    /// The record that is being worked on; null when none is.
    [[nodiscard]] QUuid record() const { return m_record; }
    /// What went wrong last, one sentence; empty when nothing has since an operation started.
    [[nodiscard]] QString error() const { return m_error; }

    /// On the language model in that file, or on the one that the settings choose.
    QCoro::Task<Text> correct(QUuid id, QString modelFile = {});
    QCoro::Task<Text> summarize(QUuid id, QString modelFile = {});
    QCoro::Task<Text> ask(QUuid id, QString question, QString modelFile = {});

    struct Recognition
    {
        ModelFile model;
        /// A language code or "auto".
        QString language;
        TranscriptionService::SpeakerDetection speakers = TranscriptionService::SpeakerDetection::Off;
    };
    /// Replaces the record's text and drops what was made of the old one; the log of events keeps both.
    QCoro::Task<Text> transcribeAnew(QUuid id, Recognition recognition);

    /// Ends the running operation; nothing is stored, and the next one may begin at once.
    void cancel();

Q_SIGNALS:
    void recordChanged();
    void errorChanged();

private:
    /// What becomes of a record's text, on the language model and in the history.
    using Process = std::function<QCoro::Task<QString>(TextCorrectionService *, QString, std::stop_token)>;
    using Store = std::function<void(HistoryStore *, const QString &)>;
    using Work = std::function<QCoro::Task<QString>(std::stop_token)>;

    QCoro::Task<Text> process(QUuid id, Process process, Store store);
    QCoro::Task<QString> processed(QUuid id, Process process, Store store, std::stop_token stop);
    QCoro::Task<QString> transcribed(QUuid id, Recognition recognition, std::stop_token stop);
    /// Has the history know what became of the record meanwhile. Throws Error when it was deleted.
    QCoro::Task<> requireStill(QUuid id, std::stop_token stop);
    QCoro::Task<Text> run(QUuid id, Work work);
    void setRecord(const QUuid &id);
    void setError(const QString &text);

    HistoryStore &m_history;
    TextCorrectionService &m_corrector;
    TranscriptionService &m_transcriber;
    const QString m_recordingsFolder;

    QUuid m_record;
    QString m_error;

    /// Of the operation that runs; each has its own.
    std::stop_source m_cancellation;
};

} // namespace orvane
