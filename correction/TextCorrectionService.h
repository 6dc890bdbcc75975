#pragma once

#include "correction/BuiltInModel.h"
#include "correction/LocalLLMEngine.h"
#include "models/CorrectionModelManager.h"
#include "settings/AppSettings.h"

#include <QObject>
#include <QStringList>

#include <QCoroTask>

#include <functional>
#include <memory>
#include <optional>
#include <stop_token>

namespace orvane {

/// Everything that a language model does to texts: corrects them, makes of a dictation what its mode wants,
/// answers questions about a transcript, writes a meeting's protocol. On the system's own model or on the
/// local engine, as the settings say. Main thread.
///
/// Operations never throw. They return none when nothing came of them, and then error() tells why; after
/// a cancellation it stays empty. One runs at a time: a call during another returns none at once and
/// changes nothing. Lengths are in characters as people see them.
class TextCorrectionService : public QObject
{
    Q_OBJECT
    Q_PROPERTY(bool isCorrecting READ isCorrecting NOTIFY isCorrectingChanged)
    Q_PROPERTY(double progress READ progress NOTIFY progressChanged)
    Q_PROPERTY(QString error READ error NOTIFY errorChanged)

public:
    using Status = BuiltInModel::Availability;

    /// The references outlive this.
    TextCorrectionService(AppSettings &settings, CorrectionModelManager &models,
                          std::unique_ptr<LocalLLMEngine> local, std::unique_ptr<BuiltInModel> builtIn,
                          QObject *parent = nullptr);
    /// Running operations return none.
    ~TextCorrectionService() override;

    [[nodiscard]] bool isCorrecting() const { return m_isCorrecting; }
    /// How much of the running operation is done, 0…1.
    [[nodiscard]] double progress() const { return m_progress; }
    /// What went wrong last, one sentence; empty when nothing has since an operation started.
    [[nodiscard]] QString error() const { return m_error; }

    /// Punctuation, capitals, spelling, paragraphs; long texts piece by piece.
    QCoro::Task<std::optional<QString>> correct(QString text);
    /// What the dictation mode makes of a dictated text, of which other modes than Correct take the first
    /// 6000 characters.
    QCoro::Task<std::optional<QString>> processDictation(QString text, DictationMode mode);
    /// Carries out a request about a transcript, of which it takes the first 6000 characters.
    QCoro::Task<std::optional<QString>> process(QString transcript, QString instruction);
    /// The protocol of a meeting in Markdown, from the first 6000 characters of its transcript.
    QCoro::Task<std::optional<QString>> summarize(QString text);

    /// Ends the running operation. What the model was given it still computes, unseen, and the local engine
    /// starts anew for the next operation, which may begin at once.
    void cancel();

    /// Whether an operation could run now.
    [[nodiscard]] Status status() const;
    [[nodiscard]] Status localAvailability() const;
    [[nodiscard]] Status builtInAvailability() const { return m_builtIn->availability(); }
    /// The engine of the next operation: the one in the settings, but the local one when the built-in model
    /// is chosen and not ready while the local one is.
    [[nodiscard]] CorrectionEngine effectiveEngine() const;
    /// The downloaded model that the settings choose, or the first one; none when none is downloaded.
    [[nodiscard]] std::optional<CorrectionModel> resolvedLocalModel() const;
    /// The user's prompt, or the default one, and always the safeguard against commands in the text.
    [[nodiscard]] QString correctionSystemPrompt() const;
    [[nodiscard]] LocalLLMEngine &local() { return *m_local; }

    /// Has all operations use this model file on the local engine, whatever model and engine the settings
    /// choose; with an empty path the settings count again.
    void useModelFile(const QString &path) { m_modelFile = path; }

    /// The text in chunks of whole sentences, each of at most that many characters and without blanks around
    /// it; sentences that are longer are cut.
    [[nodiscard]] static QStringList split(const QString &text, qsizetype maxChars);
    /// Pieces of exactly that many characters, the last one possibly shorter.
    [[nodiscard]] static QStringList hardSplit(const QString &text, qsizetype maxChars);
    /// The model's answer without what it repeats of its instructions; `fallback` when nothing is left.
    [[nodiscard]] static QString cleanCorrection(const QString &answer, const QString &fallback);

Q_SIGNALS:
    void isCorrectingChanged();
    void progressChanged();
    void errorChanged();

private:
    struct Job;

    [[nodiscard]] bool canStart(const QString &unavailable);
    QCoro::Task<std::optional<QString>> run(Job job);
    QCoro::Task<QString> carryOut(Job job, std::stop_token stop);
    QCoro::Task<QString> ask(const Job &job, const QString &user);
    [[nodiscard]] QString localModelPath() const;
    void setCorrecting(bool correcting);
    void setProgress(double progress);
    void setError(const QString &text);

    AppSettings &m_settings;
    CorrectionModelManager &m_models;
    const std::unique_ptr<LocalLLMEngine> m_local;
    const std::unique_ptr<BuiltInModel> m_builtIn;
    QString m_modelFile;

    bool m_isCorrecting = false;
    double m_progress = 0;
    QString m_error;

    /// Of the operation that runs; each has its own, so that no later one revives a cancelled one.
    std::stop_source m_cancellation;
    std::stop_source m_lifetime;
};

} // namespace orvane
