#include "dictation/DictationController.h"

#include "audio/CaptureError.h"
#include "audio/MicrophoneAccess.h"
#include "audio/SampleRate.h"
#include "base/Async.h"
#include "base/localization/Localization.h"
#include "correction/TextCorrectionService.h"
#include "desktop/TextInjector.h"
#include "dictation/Advice.h"
#include "dictation/DictationIndicator.h"
#include "dictation/Guidance.h"
#include "models/ModelManager.h"
#include "recognition/WhisperServerEngine.h"
#include "settings/AppSettings.h"
#include "settings/UserDefaults.h"

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orvane {

namespace {

/// What is not longer than 0.3 s is a slip of the keys, not speech.
constexpr size_t longestSlip = sampleRate * 3 / 10;
/// Until the screen is as it was before the indicator, and the focus where the text is to go.
constexpr auto settlingTime = 80ms;
/// Dictations are in any language, whatever the files are in.
constexpr auto spokenLanguage = "auto"_L1;
constexpr auto hintShownKey = "dictationModeModelHintShown"_L1;

} // namespace

DictationController::DictationController(Collaborators collaborators, const QString &moduleFolder,
                                         QObject *parent)
    : QObject(parent),
      m_services(collaborators),
      m_recorder(moduleFolder)
{
    connect(&m_recorder, &AudioRecorder::endedByItself, this, &DictationController::process);
}

DictationController::~DictationController()
{
    m_scope.end();
    m_session.request_stop();
}

std::optional<DictationMode> DictationController::processingMode() const
{
    return m_state == State::Correcting ? m_processingMode : std::nullopt;
}

bool DictationController::interceptsEscape() const
{
    return m_state != State::Idle && m_state != State::Starting;
}

void DictationController::toggle()
{
    if (m_state == State::Idle)
        start();
    else
        stop();
}

void DictationController::start()
{
    spawnPublished(begin());
}

QCoro::Task<> DictationController::begin()
{
    if (m_state != State::Idle)
        throw Error(Localization::text(u"Диктовка уже идёт."));
    if (modelFile().isEmpty())
        refuse(Advice::onMissingModel());
    m_session.request_stop();
    m_session = std::stop_source();
    setLastError({});
    setState(State::Starting);
    // The microphone first: nothing of what is said while the indicator appears may be lost.
    QCoro::Task<> recording = record(m_session.get_token());
    if (m_state != State::Idle)
        m_services.indicator.show(*this, m_services.settings);
    co_await std::move(recording);
}

QCoro::Task<> DictationController::record(std::stop_token session)
{
    std::optional<Advice> advice;
    try {
        if (!co_await m_scope(requestMicrophone(session), session))
            throw CaptureError::accessRefused();
        co_await m_scope(m_recorder.start(), session);
    } catch (const Cancelled &) {
        throw;
    } catch (const std::exception &error) {
        advice = Advice::onFailedRecording(error);
    }
    if (advice) {
        end();
        refuse(*advice);
    }
    setState(State::Recording);
    spawn(preload());
}

QCoro::Task<> DictationController::preload()
{
    try {
        co_await m_services.engine.load(modelFile(), m_scope.stop());
    } catch (const Error &) {
        // The recognition will meet it again, and say so if it is still true then.
    }
}

void DictationController::stop()
{
    process({});
}

void DictationController::process(const QString &problem)
{
    if (m_state != State::Recording)
        return;
    setState(State::Transcribing);
    spawn(finish(m_session.get_token(), problem));
}

QCoro::Task<> DictationController::finish(std::stop_token session, QString problem)
{
    Dictated dictated;
    try {
        std::vector<float> samples = co_await m_scope(m_recorder.stop(), session);
        dictated = co_await m_scope(textOf(std::move(samples), session), session);
        if (dictated.problem.isEmpty())
            dictated.problem = problem;
    } catch (const Gone &) {
        throw;
    } catch (const Cancelled &) {
        throwIfCancelled(session); // who abandoned it has put everything in order
        dictated.problem = Localization::text(u"Распознавание прервано.");
    } catch (const std::exception &error) {
        dictated.problem = descriptionOf(error);
    }

    end();
    if (!dictated.problem.isEmpty())
        setLastError(dictated.problem);
    if (!dictated.text.isEmpty())
        co_await m_scope(paste(dictated, session));
    else if (!dictated.problem.isEmpty())
        m_services.indicator.notice(dictated.problem);
}

QCoro::Task<DictationController::Dictated> DictationController::textOf(std::vector<float> samples,
                                                                       std::stop_token session)
{
    Dictated dictated;
    dictated.text = co_await m_scope(recognised(std::move(samples), session), session);
    if (dictated.text.isEmpty())
        co_return dictated;
    const DictationMode mode = m_services.settings.dictationMode();
    if (!m_services.corrector.status().isReady) {
        dictated.needsModel = mode != DictationMode::Correct;
        co_return dictated;
    }
    if (m_services.corrector.isCorrecting()) {
        dictated.problem =
            Localization::text(u"Языковая модель занята — вставлен распознанный текст без обработки.");
        co_return dictated;
    }
    m_processingMode = mode;
    setState(State::Correcting);
    try {
        dictated.text =
            co_await m_scope(m_services.corrector.processDictation(dictated.text, mode, session), session);
    } catch (const Gone &) {
        throw;
    } catch (const Cancelled &) {
        throwIfCancelled(session);
        dictated.problem = m_services.corrector.status().message; // switched off meanwhile
    } catch (const std::exception &error) {
        // What was said must not be lost because a model failed.
        dictated.problem = descriptionOf(error);
    }
    co_return dictated;
}

QCoro::Task<QString> DictationController::recognised(std::vector<float> samples, std::stop_token session)
{
    if (samples.size() <= longestSlip)
        co_return QString();
    const QString model = modelFile();
    if (model.isEmpty())
        throw Error(Advice::onMissingModel().detail);
    const QList<RawSegment> segments =
        co_await m_scope(m_services.engine.transcribe(std::move(samples), model, spokenLanguage.toString(),
                                                      WhisperServerEngine::NonSpeech::Suppress, session),
                         session);
    QString text;
    for (const RawSegment &segment : segments)
        text += segment.text;
    co_return text.trimmed();
}

QCoro::Task<> DictationController::paste(Dictated dictated, std::stop_token session)
{
    co_await m_scope(sleepFor(settlingTime, m_scope.stop()));
    const TextInjector::Outcome outcome = co_await m_scope(m_services.injector.insert(dictated.text));
    // The text comes in any case, but not a word more once the next dictation is on the screen.
    throwIfCancelled(session);
    switch (outcome) {
    case TextInjector::Outcome::Pasted:
        break;
    case TextInjector::Outcome::LeftOnClipboard:
        dictated.problem = Localization::text(u"Текст в буфере обмена — вставьте его: Ctrl+V");
        break;
    case TextInjector::Outcome::Nothing:
        dictated.problem = Localization::text(u"Текст не вставлен: буфер обмена недоступен.");
        setLastError(dictated.problem);
        break;
    }
    if (!dictated.problem.isEmpty())
        m_services.indicator.notice(dictated.problem);
    // Not before the paste: a dialog would take the focus, and the text with it.
    if (dictated.needsModel)
        notifyModelNeededOnce();
}

void DictationController::cancel()
{
    if (!interceptsEscape())
        return;
    m_session.request_stop();
    if (m_state == State::Recording)
        m_recorder.discard();
    end();
}

void DictationController::end()
{
    setState(State::Idle);
    m_services.indicator.hide();
}

void DictationController::refuse(const Advice &advice)
{
    present(advice);
    throw Error(m_lastError);
}

void DictationController::present(const Advice &advice)
{
    setLastError(advice.title + u": "_s + advice.detail);
    m_services.guidance.guide(advice.title, advice.detail);
}

void DictationController::notifyModelNeededOnce()
{
    if (m_services.defaults.boolean(hintShownKey).value_or(false))
        return;
    m_services.defaults.set(hintShownKey, true);
    present(Advice::onMissingLanguageModel());
}

QString DictationController::modelFile() const
{
    const auto model = m_services.models.resolved(m_services.settings.selectedModelID());
    return model ? m_services.models.localPath(*model) : QString();
}

void DictationController::setState(State state)
{
    if (m_state == state)
        return;
    m_state = state;
    Q_EMIT stateChanged();
}

void DictationController::setLastError(const QString &text)
{
    if (m_lastError == text)
        return;
    m_lastError = text;
    Q_EMIT lastErrorChanged();
}

void DictationController::setHotkeyActive(bool active)
{
    if (m_hotkeyActive == active)
        return;
    m_hotkeyActive = active;
    Q_EMIT hotkeyActiveChanged();
}

} // namespace orvane
