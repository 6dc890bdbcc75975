#include "dictation/DictationController.h"

#include "audio/CaptureError.h"
#include "audio/MicrophoneAccess.h"
#include "base/Async.h"
#include "base/localization/Localization.h"
#include "correction/TextCorrectionService.h"
#include "desktop/TextInjector.h"
#include "dictation/Advice.h"
#include "dictation/Battery.h"
#include "dictation/DictationIndicator.h"
#include "dictation/EarlyRecognition.h"
#include "dictation/Guidance.h"
#include "models/ModelManager.h"
#include "settings/AppSettings.h"
#include "settings/UserDefaults.h"

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orvane {

namespace {

/// Until the screen is as it was before the indicator, and the focus where the text is to go.
constexpr auto settlingTime = 80ms;
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

LiveText DictationController::liveText() const
{
    return m_recognition ? m_recognition->liveText() : LiveText();
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
    beginRecognition();
    setState(State::Recording);
}

void DictationController::beginRecognition()
{
    m_services.battery.look();
    m_recognition = std::make_unique<EarlyRecognition>(EarlyRecognition::Collaborators{
        .engine = m_services.engine,
        .turns = m_services.turns,
        .battery = m_services.battery,
        .modelFile = [this] { return modelFile(); },
        .samplesAfter = [this](size_t first,
                               size_t count) { return m_recorder.samplesAfter(first, count); }});
    connect(&m_recorder, &AudioRecorder::levelChanged, m_recognition.get(), &EarlyRecognition::hear);
    connect(m_recognition.get(), &EarlyRecognition::liveTextChanged, this,
            &DictationController::liveTextChanged);
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
    dictated.text = co_await m_scope(m_recognition->textOf(std::move(samples), session), session);
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
    if (std::exchange(m_recognition, nullptr))
        Q_EMIT liveTextChanged();
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
