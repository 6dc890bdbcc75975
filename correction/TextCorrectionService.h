#pragma once

#include "base/Operation.h"
#include "base/localization/Localization.h"
#include "correction/BuiltInModel.h"
#include "correction/LocalLLMEngine.h"
#include "models/CorrectionModelManager.h"
#include "settings/AppSettings.h"

#include <QObject>

#include <QCoroTask>

#include <memory>
#include <optional>
#include <stop_token>

namespace orvane {

/// Everything that a language model does to texts: corrects them, makes of a dictation what its mode wants,
/// answers questions about a transcript, writes a meeting's protocol. On the system's own model or on the
/// local engine, as the settings say. Main thread.
///
/// An operation returns its text, an empty one for an empty text. It throws Error, one sentence that is also
/// error() now, or Cancelled, and then nothing computes any more. One runs at a time: another is refused
/// with an Error and changes nothing. With the file of a model the local engine is asked with that one,
/// whatever the settings choose. Lengths are in characters as people see them.
class TextCorrectionService : public QObject
{
    Q_OBJECT
    Q_PROPERTY(bool isCorrecting READ isCorrecting NOTIFY isCorrectingChanged)
    Q_PROPERTY(double progress READ progress NOTIFY progressChanged)
    Q_PROPERTY(qint64 remainingMs READ remainingMs NOTIFY progressChanged)
    Q_PROPERTY(QString error READ error NOTIFY errorChanged)

public:
    /// The references outlive this.
    TextCorrectionService(AppSettings &settings, CorrectionModelManager &models,
                          std::unique_ptr<LocalLLMEngine> local, std::unique_ptr<BuiltInModel> builtIn,
                          QObject *parent = nullptr);
    /// A running operation ends with Cancelled.
    ~TextCorrectionService() override;

    [[nodiscard]] bool isCorrecting() const { return m_operation.isRunning(); }
    /// How much of the running operation is done, 0…1.
    [[nodiscard]] double progress() const { return m_operation.progress(); }
    /// To the end of the running operation; negative while unknown.
    [[nodiscard]] qint64 remainingMs() const { return m_operation.remainingMs(); }
    /// What went wrong last, one sentence; empty when nothing has since an operation started.
    [[nodiscard]] QString error() const { return m_operation.error(); }

    /// Punctuation, capitals, spelling, paragraphs; long texts piece by piece.
    QCoro::Task<QString> correct(QString text, std::stop_token stop, QString modelFile = {});
    /// What the dictation mode makes of a dictated text, of which other modes than Correct take the first
    /// 6000 characters.
    QCoro::Task<QString> processDictation(QString text, DictationMode mode, std::stop_token stop,
                                          QString modelFile = {});
    /// Carries out a request about a transcript, of which it takes the first 6000 characters.
    QCoro::Task<QString> process(QString transcript, QString instruction, std::stop_token stop,
                                 QString modelFile = {});
    /// The protocol of a meeting in Markdown, from the first 6000 characters of its transcript.
    QCoro::Task<QString> summarize(QString text, std::stop_token stop, QString modelFile = {});

    /// Ends the running operation; the next one may begin at once.
    void cancel() { m_operation.cancel(); }

    /// Whether an operation could run now, on that model file or as the settings say.
    [[nodiscard]] ModelAvailability status(const QString &modelFile = {}) const;
    [[nodiscard]] ModelAvailability localAvailability(const QString &modelFile = {}) const;
    [[nodiscard]] ModelAvailability builtInAvailability() const { return m_builtIn->availability(); }
    /// The engine of the next operation: the one in the settings, but the local one when the built-in model
    /// is chosen and not ready while the local one is.
    [[nodiscard]] CorrectionEngine effectiveEngine() const;
    /// The downloaded model that the settings choose, or the first one; none when none is downloaded.
    [[nodiscard]] std::optional<CorrectionModel> resolvedLocalModel() const;
    /// The user's prompt, or the default one, and always the safeguard against commands in the text.
    [[nodiscard]] QString correctionSystemPrompt() const;
    [[nodiscard]] LocalLLMEngine &local() { return *m_local; }

    /// The model's answer without what it repeats of its instructions; `fallback` when nothing is left.
    [[nodiscard]] static QString cleanCorrection(const QString &answer, const QString &fallback);

Q_SIGNALS:
    void isCorrectingChanged();
    void progressChanged();
    void errorChanged();
    /// status() may be another.
    void statusChanged();

private:
    struct Job;

    void requireReady(const QString &modelFile, Localization::Text unavailable);
    [[nodiscard]] CorrectionEngine engineFor(const QString &modelFile) const;
    [[nodiscard]] QString localModelPath(const QString &modelFile) const;
    QCoro::Task<QString> run(Job job, std::stop_token stop);
    QCoro::Task<QString> carryOut(Job job, Progress progress, std::stop_token stop);
    QCoro::Task<QString> ask(const Job &job, const QString &user, std::stop_token stop);

    AppSettings &m_settings;
    CorrectionModelManager &m_models;
    const std::unique_ptr<LocalLLMEngine> m_local;
    const std::unique_ptr<BuiltInModel> m_builtIn;
    Operation m_operation;
    Scope m_scope;
};

} // namespace orvane
