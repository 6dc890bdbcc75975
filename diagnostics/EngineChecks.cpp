#include "diagnostics/EngineChecks.h"

#include "audio/SampleRate.h"
#include "base/localization/Localization.h"
#include "correction/TextCorrectionService.h"
#include "engine/EngineTurns.h"
#include "models/CorrectionModelManager.h"
#include "models/ModelManager.h"
#include "recognition/WhisperServerEngine.h"
#include "settings/AppSettings.h"

namespace orvane::EngineChecks {

using Localization::text;
using State = CheckResult::State;

namespace {

CheckResult answering(const QString &model)
{
    return {.state = State::Good, .text = text(u"Отвечает с моделью %1.").arg(model)};
}

CheckResult failureWith(const QString &model, const EngineServer::EngineError &error)
{
    const QString sentence =
        error.kind() == EngineServer::EngineError::Kind::serverFailedToStart
            ? text(u"Движок не запускается с моделью %1: скачайте её заново или выберите модель поменьше.")
            : text(u"Движок не отвечает с моделью %1: перезапустите Orvane, а если не поможет — компьютер.");
    return {.state = State::Bad, .text = sentence.arg(model)};
}

} // namespace

QCoro::Task<CheckResult> speech(Speech services, std::stop_token stop)
{
    if (services.engine->findBinary().isEmpty()) {
        co_return CheckResult{.state = State::Bad,
                              .text =
                                  text(u"Движок не найден: переустановите Orvane или установите whisper.cpp "
                                       "так, чтобы программа whisper-server была в PATH.")};
    }
    const std::optional<WhisperModel> model = services.models->resolved(services.settings->selectedModelID());
    if (!model) {
        co_return CheckResult{.state = State::Bad,
                              .text = text(u"Модель не скачана: выберите её в настройках («Модели») или "
                                           "выполните orvane models download base.")};
    }
    const EngineTurns::Turn turn = services.turns->take();
    if (!turn)
        co_return CheckResult{.text = EngineTurns::waitText()};
    try {
        co_await services.engine->transcribe(
            std::vector<float>(sampleRate, 0), services.models->localPath(*model),
            services.settings->language().code, WhisperServerEngine::NonSpeech::Suppress, stop);
    } catch (const EngineServer::EngineError &error) {
        co_return failureWith(model->displayName, error);
    }
    co_return answering(model->displayName);
}

QCoro::Task<CheckResult> language(Language services, std::stop_token stop)
{
    TextCorrectionService &corrector = *services.corrector;
    LocalLLMEngine &engine = corrector.local();
    if (!services.settings->textCorrectionEnabled())
        co_return CheckResult{.text = corrector.status().message};
    if (corrector.effectiveEngine() == CorrectionEngine::BuiltIn && corrector.builtInAvailability().isReady)
        co_return answering(title(CorrectionEngine::BuiltIn));
    const std::optional<CorrectionModel> model = corrector.resolvedLocalModel();
    if (!model)
        co_return CheckResult{.text = text(u"Скачайте модель коррекции в настройках (вкладка «Коррекция»).")};
    if (engine.findBinary().isEmpty()) {
        co_return CheckResult{.state = State::Bad,
                              .text = text(u"Движок не найден: установите llama.cpp так, чтобы программа "
                                           "llama-server была в PATH.")};
    }
    if (corrector.isCorrecting())
        co_return CheckResult{.text = text(u"Сейчас обрабатывает текст.")};
    const bool wasRunning = engine.isRunning();
    try {
        co_await engine.load(services.models->localPath(*model), stop);
    } catch (const EngineServer::EngineError &error) {
        co_return failureWith(model->displayName, error);
    }
    if (!wasRunning && !corrector.isCorrecting())
        engine.stop();
    co_return answering(model->displayName);
}

} // namespace orvane::EngineChecks
