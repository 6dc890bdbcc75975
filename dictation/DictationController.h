#pragma once

#include "audio/AudioRecorder.h"
#include "base/Scope.h"
#include "dictation/DictationState.h"
#include "dictation/LiveText.h"
#include "settings/StoredChoices.h"

#include <QObject>
#include <QString>

#include <QCoroTask>

#include <memory>
#include <optional>
#include <stop_token>
#include <vector>

namespace orvane {

struct Advice;
class AppSettings;
class Battery;
class DictationIndicator;
class EarlyRecognition;
class EngineTurns;
class Guidance;
class ModelManager;
class TextCorrectionService;
class TextInjector;
class UserDefaults;
class WhisperServerEngine;

/// Runs one dictation at a time: records the microphone, has the speech recognised, has the text processed
/// by a language model in the chosen mode when there is one, and pastes it into the application with the
/// focus. Whatever goes wrong is said, in lastError and on the screen. Main thread.
class DictationController : public QObject
{
    Q_OBJECT
    Q_PROPERTY(orvane::DictationState state READ state NOTIFY stateChanged)
    Q_PROPERTY(QString lastError READ lastError NOTIFY lastErrorChanged)
    Q_PROPERTY(orvane::LiveText liveText READ liveText NOTIFY liveTextChanged)
    Q_PROPERTY(bool hotkeyActive READ hotkeyActive WRITE setHotkeyActive NOTIFY hotkeyActiveChanged)

public:
    using State = DictationState;

    struct Collaborators
    {
        ModelManager &models;
        AppSettings &settings;
        UserDefaults &defaults;
        TextCorrectionService &corrector;
        WhisperServerEngine &engine;
        const EngineTurns &turns;
        Battery &battery;
        TextInjector &injector;
        DictationIndicator &indicator;
        Guidance &guidance;
    };

    /// The module that records lies in `moduleFolder`. The references outlive this.
    DictationController(Collaborators collaborators, const QString &moduleFolder, QObject *parent = nullptr);
    /// Abandons what runs.
    ~DictationController() override;

    [[nodiscard]] State state() const { return m_state; }
    /// The last problem, one sentence; empty once a later dictation has begun.
    [[nodiscard]] QString lastError() const { return m_lastError; }
    /// What has been recognised of the dictation so far; empty when none runs.
    [[nodiscard]] LiveText liveText() const;
    /// Whether the keyboard trigger works; whoever owns the trigger says so.
    [[nodiscard]] bool hotkeyActive() const { return m_hotkeyActive; }
    void setHotkeyActive(bool active);

    [[nodiscard]] AudioRecorder &recorder() { return m_recorder; }
    /// What the model is making of the text; none unless the state is Correcting.
    [[nodiscard]] std::optional<DictationMode> processingMode() const;
    /// Whether Esc belongs to the dictation: from the beginning of a recording to the end of its session.
    [[nodiscard]] bool interceptsEscape() const;

    /// Begins a dictation, if none runs.
    void start();
    /// The same for who has to know whether one began: resumes when the microphone records. Throws Error with
    /// what the user has been shown when none began, and Cancelled when it was abandoned.
    [[nodiscard]] QCoro::Task<> begin();
    /// Ends the recording and has it processed, if one runs.
    void stop();
    /// Abandons the dictation at any stage after its recording began. Nothing is pasted.
    void cancel();
    /// Starts when idle, stops when recording, else nothing.
    void toggle();

Q_SIGNALS:
    void stateChanged();
    void lastErrorChanged();
    void liveTextChanged();
    void hotkeyActiveChanged();

private:
    /// What became of what was said.
    struct Dictated
    {
        QString text;
        /// Why it is not what it should be; empty when it is.
        QString problem;
        bool needsModel = false;
    };

    QCoro::Task<> record(std::stop_token session);
    void beginRecognition();
    void process(const QString &problem);
    QCoro::Task<> finish(std::stop_token session, QString problem);
    QCoro::Task<Dictated> textOf(std::vector<float> samples, std::stop_token session);
    QCoro::Task<> paste(Dictated dictated, std::stop_token session);

    void end();
    [[noreturn]] void refuse(const Advice &advice);
    void present(const Advice &advice);
    void notifyModelNeededOnce();
    /// The file of the model to recognise with; empty when none is downloaded.
    [[nodiscard]] QString modelFile() const;
    void setState(State state);
    void setLastError(const QString &text);

    Collaborators m_services;
    AudioRecorder m_recorder;
    State m_state = State::Idle;
    std::unique_ptr<EarlyRecognition> m_recognition; // from the beginning of a recording to its text
    std::optional<DictationMode> m_processingMode;
    QString m_lastError;
    bool m_hotkeyActive = false;
    /// Of the last dictation; stopped when it is abandoned, or has ended and the next one has the screen.
    std::stop_source m_session;
    Scope m_scope;
};

} // namespace orvane
