#include "dictation/Advice.h"

#include "audio/CaptureError.h"
#include "base/Error.h"
#include "base/localization/Localization.h"

namespace orvane {

Advice Advice::onMissingModel()
{
    return {.title = Localization::text(u"Нет модели"),
            .detail =
                Localization::text(u"Сначала скачайте модель Whisper: меню Orvane → «Настройки моделей…».")};
}

Advice Advice::onFailedRecording(const std::exception &reason)
{
    const auto *capture = dynamic_cast<const CaptureError *>(&reason);
    if (!capture || capture->kind() != CaptureError::Kind::accessRefused)
        return {.title = Localization::text(u"Не удалось начать запись"), .detail = descriptionOf(reason)};
    return {.title = Localization::text(u"Нет доступа к микрофону"),
            .detail = Localization::text(u"Разрешите доступ в Системных настройках → Конфиденциальность и "
                                         "безопасность → Микрофон.")};
}

Advice Advice::onMissingLanguageModel()
{
    return {.title = Localization::text(u"Нужна модель для этого режима"),
            .detail = Localization::text(
                u"Режимы «Письмо» и «Промпт» обрабатывают речь языковой моделью. Настройте её в Настройки → "
                "«Коррекция». Сейчас вставлен распознанный текст без обработки.")};
}

} // namespace orvane
