#include "dictation/DictationController.h"

#include "audio/SampleRate.h"
#include "base/Async.h"
#include "base/localization/Localization.h"
#include "correction/TextCorrectionService.h"
#include "desktop/TextInjector.h"
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
constexpr size_t mostOfASlip = sampleRate * 3 / 10;
/// Until the screen is as it was before the indicator, and the focus where the text is to go.
constexpr auto settlingTime = 80ms;
/// Dictations are in any language, whatever the files are in.
constexpr auto spokenLanguage = "auto"_L1;
constexpr auto hintShownKey = "dictationModeModelHintShown"_L1;

QString howToGetAModel()
{
    return Localization::text(u"Сначала скачайте модель Whisper: меню Orvane → «Настройки моделей…».");
}

} // namespace

DictationController::DictationController(Collaborators collaborators, const QString &moduleFolder,
                                         QObject *parent)
    : QObject(parent),
      m_with(collaborators),
      m_recorder(moduleFolder)
{}

DictationController::~DictationController()
{
    m_lifetime.request_stop();
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
    if (m_state != State::Idle)
        return;
    if (modelFile().isEmpty()) {
        presentGuidance(Localization::text(u"Нет модели"), howToGetAModel());
        return;
    }
    m_session = std::stop_source();
    setLastError({});
    setState(State::Starting);
    // The microphone first: nothing of what is said while the indicator appears may be lost.
    spawn(record(m_session.get_token()));
    if (m_state != State::Idle)
        m_with.indicator.show(*this, m_with.settings);
}

QCoro::Task<> DictationController::record(std::stop_token session)
{
    QString failure;
    try {
        co_await m_recorder.start();
    } catch (const std::exception &error) {
        failure = QString::fromUtf8(error.what());
    }
    if (session.stop_requested())
        co_return;
    if (!failure.isEmpty()) {
        end();
        presentGuidance(Localization::text(u"Не удалось начать запись"), failure);
        co_return;
    }
    setState(State::Recording);
    spawn(preload(m_lifetime.get_token()));
}

QCoro::Task<> DictationController::preload(std::stop_token alive)
{
    try {
        co_await m_with.engine.load(modelFile(), alive);
    } catch (const Error &) {
        // The recognition will meet it again, and say so if it is still true then.
    }
}

void DictationController::stop()
{
    if (m_state != State::Recording)
        return;
    setState(State::Transcribing);
    spawn(finish(m_session.get_token()));
}

QCoro::Task<> DictationController::finish(std::stop_token session)
{
    QString text;
    QString failure;
    bool needsModel = false;
    try {
        std::vector<float> samples = co_await m_recorder.stop();
        throwIfCancelled(session);
        text = co_await recognised(std::move(samples), session);
        throwIfCancelled(session);
        if (!text.isEmpty()) {
            const DictationMode mode = m_with.settings.dictationMode();
            if (m_with.corrector.status().isReady)
                text = co_await processed(text, mode, session);
            else
                needsModel = mode != DictationMode::Correct;
        }
    } catch (const Cancelled &) {
        text.clear();
    } catch (const std::exception &error) {
        text.clear();
        failure = QString::fromUtf8(error.what());
    }
    if (session.stop_requested())
        co_return; // who abandoned it has put everything in order

    end();
    if (!failure.isEmpty())
        fail(failure);
    if (text.isEmpty())
        co_return;
    const QString problem = m_lastError; // why the text is as it was spoken
    const std::stop_token alive = m_lifetime.get_token();
    co_await sleepFor(settlingTime, alive);
    const TextInjector::Outcome outcome = co_await m_with.injector.insert(text);
    throwIfCancelled(alive);
    if (outcome == TextInjector::Outcome::LeftOnClipboard)
        m_with.indicator.notice(Localization::text(u"Текст в буфере обмена — вставьте его: Ctrl+V"));
    else if (!problem.isEmpty())
        m_with.indicator.notice(problem);
    // Not before the paste: a dialog would take the focus, and the text with it.
    if (needsModel)
        notifyModelNeededOnce();
}

QCoro::Task<QString> DictationController::recognised(std::vector<float> samples, std::stop_token session)
{
    if (samples.size() <= mostOfASlip)
        co_return QString();
    const QString model = modelFile();
    if (model.isEmpty())
        throw Error(howToGetAModel());
    const QList<RawSegment> segments =
        co_await m_with.engine.transcribe(std::move(samples), model, spokenLanguage.toString(),
                                          WhisperServerEngine::NonSpeech::Suppress, session);
    QString text;
    for (const RawSegment &segment : segments)
        text += segment.text;
    co_return text.trimmed();
}

QCoro::Task<QString> DictationController::processed(QString text, DictationMode mode, std::stop_token session)
{
    m_processingMode = mode;
    setState(State::Correcting);
    // What was said must not be lost because a model failed.
    QString reason = Localization::text(u"Языковая модель занята — вставлен "
                                        "распознанный текст без обработки.");
    if (!m_with.corrector.isCorrecting()) {
        try {
            co_return co_await m_with.corrector.processDictation(text, mode, session);
        } catch (const Cancelled &) {
            reason.clear(); // the processing was switched off
        } catch (const std::exception &error) {
            reason = descriptionOf(error);
        }
    }
    throwIfCancelled(session);
    setLastError(reason);
    co_return text;
}

void DictationController::cancel()
{
    if (!interceptsEscape())
        return;
    m_session.request_stop();
    if (m_state == State::Recording)
        spawn(discardRecording());
    end();
}

QCoro::Task<> DictationController::discardRecording()
{
    co_await m_recorder.stop();
}

void DictationController::end()
{
    setState(State::Idle);
    m_with.indicator.hide();
}

void DictationController::fail(const QString &problem)
{
    setLastError(problem);
    m_with.indicator.notice(problem);
}

void DictationController::presentGuidance(const QString &title, const QString &detail)
{
    setLastError(title + u": "_s + detail);
    m_with.guidance.guide(title, detail);
}

void DictationController::notifyModelNeededOnce()
{
    if (m_with.defaults.boolean(hintShownKey).value_or(false))
        return;
    m_with.defaults.set(hintShownKey, true);
    presentGuidance(
        Localization::text(u"Нужна модель для этого режима"),
        Localization::text(u"Режимы «Письмо» и «Промпт» обрабатывают речь языковой моделью. Настройте её в "
                           "Настройки → «Коррекция». Сейчас вставлен распознанный текст без обработки."));
}

QString DictationController::modelFile() const
{
    const auto model = m_with.models.resolved(m_with.settings.selectedModelID());
    return model ? m_with.models.localPath(*model) : QString();
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
