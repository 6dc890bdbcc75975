#pragma once

#include "diagnostics/CheckResult.h"

#include <QCoroTask>

#include <stop_token>

namespace orvane {

class AppSettings;
class CorrectionModelManager;
class EngineTurns;
class ModelManager;
class TextCorrectionService;
class WhisperServerEngine;

/// Whether the engines answer with the models that are chosen. Whoever uses one is not disturbed: it is not
/// found out then. The services outlive whoever awaits a check.
namespace EngineChecks {

struct Speech
{
    WhisperServerEngine *engine;
    const EngineTurns *turns;
    const ModelManager *models;
    const AppSettings *settings;
};
/// Has a second of silence recognised.
[[nodiscard]] QCoro::Task<CheckResult> speech(Speech services, std::stop_token stop);

struct Language
{
    TextCorrectionService *corrector;
    const CorrectionModelManager *models;
    const AppSettings *settings;
};
/// Has the model loaded, and ends the engine when it did not run before.
[[nodiscard]] QCoro::Task<CheckResult> language(Language services, std::stop_token stop);

} // namespace EngineChecks

} // namespace orvane
