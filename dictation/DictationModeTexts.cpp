#include "dictation/DictationModeTexts.h"

#include "base/localization/Localization.h"

using namespace Qt::StringLiterals;

namespace orvane::DictationModeTexts {

QString title(DictationMode mode)
{
    switch (mode) {
    case DictationMode::Correct:
        return Localization::text(u"Исправить");
    case DictationMode::Email:
        return Localization::text(u"Письмо");
    case DictationMode::Prompt:
        return Localization::text(u"Промпт");
    }
    Q_UNREACHABLE();
}

QString processingStatus(DictationMode mode)
{
    switch (mode) {
    case DictationMode::Correct:
        return Localization::text(u"Исправляю…");
    case DictationMode::Email:
        return Localization::text(u"Составляю письмо…");
    case DictationMode::Prompt:
        return Localization::text(u"Выполняю запрос…");
    }
    Q_UNREACHABLE();
}

QString description(DictationMode mode)
{
    switch (mode) {
    case DictationMode::Correct:
        return Localization::text(u"Исправить: модель чинит пунктуацию и грамматику надиктованного.");
    case DictationMode::Email:
        return Localization::text(u"Письмо: модель оформляет надиктованное как готовый email.");
    case DictationMode::Prompt:
        return Localization::text(
            u"Промпт: надиктованное выполняется моделью как запрос; вставляется результат.");
    }
    Q_UNREACHABLE();
}

} // namespace orvane::DictationModeTexts
