#include "models/CorrectionModel.h"

#include "base/localization/Localization.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orvane {

const QList<CorrectionModel> &CorrectionModel::catalog()
{
    static const QList<CorrectionModel> models = {
        {u"qwen2.5-1.5b"_s, u"Qwen2.5 1.5B Instruct"_s, u"Qwen2.5-1.5B-Instruct-Q4_K_M.gguf"_s,
         u"Qwen2.5-1.5B-Instruct-GGUF"_s, 1.1, 2.0, u"chatml"_s, u"Лёгкая · быстрая",
         u"Русский, английский — хорошо. Для слабых Mac (8 ГБ)."},
        {u"gemma-2-2b"_s, u"Gemma 2 2B Instruct"_s, u"gemma-2-2b-it-Q4_K_M.gguf"_s, u"gemma-2-2b-it-GGUF"_s,
         1.6, 3.0, u"gemma"_s, u"Лёгкая", u"Многоязычная (Google). Русский — хорошо."},
        {u"qwen2.5-3b"_s, u"Qwen2.5 3B Instruct"_s, u"Qwen2.5-3B-Instruct-Q4_K_M.gguf"_s,
         u"Qwen2.5-3B-Instruct-GGUF"_s, 1.9, 4.0, u"chatml"_s, u"Сбалансированная",
         u"Русский — отлично. Хороший выбор по умолчанию."},
        {u"llama-3.2-3b"_s, u"Llama 3.2 3B Instruct"_s, u"Llama-3.2-3B-Instruct-Q4_K_M.gguf"_s,
         u"Llama-3.2-3B-Instruct-GGUF"_s, 2.0, 4.0, u"llama3"_s, u"Сбалансированная",
         u"Английский — отлично, русский — хорошо (Meta)."},
        {u"qwen2.5-7b"_s, u"Qwen2.5 7B Instruct"_s, u"Qwen2.5-7B-Instruct-Q4_K_M.gguf"_s,
         u"Qwen2.5-7B-Instruct-GGUF"_s, 4.7, 7.0, u"chatml"_s, u"Высокая точность",
         u"Русский, английский — превосходно. Для Mac с 16 ГБ."},
        {u"gemma-2-9b"_s, u"Gemma 2 9B Instruct"_s, u"gemma-2-9b-it-Q4_K_M.gguf"_s, u"gemma-2-9b-it-GGUF"_s,
         5.8, 8.5, u"gemma"_s, u"Высокая точность", u"Сильная многоязычная (Google). Для Mac с 16 ГБ+."},
        {u"qwen2.5-14b"_s, u"Qwen2.5 14B Instruct"_s, u"Qwen2.5-14B-Instruct-Q4_K_M.gguf"_s,
         u"Qwen2.5-14B-Instruct-GGUF"_s, 9.0, 12.0, u"chatml"_s, u"Максимальное качество",
         u"Лучшая точность и русский. Нужен мощный Mac (24–32 ГБ)."},
    };
    return models;
}

QString CorrectionModel::repositoryPath() const
{
    return u"/quellin/"_s + repository + u"/resolve/main/"_s + fileName;
}

QString CorrectionModel::recommendedID(double ramGB, Processor processor)
{
    const double budget = processor == Processor::AppleSilicon ? ramGB * 0.5 : std::min(ramGB * 0.35, 4.0);
    const CorrectionModel *best = nullptr;
    for (const CorrectionModel &model : catalog()) {
        if (model.ramGB <= budget && (!best || model.ramGB > best->ramGB))
            best = &model;
    }
    return best ? best->id : u"qwen2.5-1.5b"_s;
}

QString title(CorrectionEngine engine)
{
    switch (engine) {
    case CorrectionEngine::BuiltIn:
        return Localization::text(u"Встроенная (Apple)");
    case CorrectionEngine::Local:
        return Localization::text(u"Опенсорсная модель");
    }
    Q_UNREACHABLE();
}

} // namespace orvane
