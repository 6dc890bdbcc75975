#include "dictation/DictationModeTexts.h"

#include "base/localization/Localization.h"

using namespace Qt::StringLiterals;

namespace orvane::DictationModeTexts {

QString title(DictationMode mode)
{
    switch (mode) {
    case DictationMode::Correct:
        return Localization::text(u"Исправить"_s);
    case DictationMode::Email:
        return Localization::text(u"Письмо"_s);
    case DictationMode::Prompt:
        return Localization::text(u"Промпт"_s);
    }
    Q_UNREACHABLE();
}

QString processingStatus(DictationMode mode)
{
    switch (mode) {
    case DictationMode::Correct:
        return Localization::text(u"Исправляю…"_s);
    case DictationMode::Email:
        return Localization::text(u"Составляю письмо…"_s);
    case DictationMode::Prompt:
        return Localization::text(u"Выполняю запрос…"_s);
    }
    Q_UNREACHABLE();
}

QString description(DictationMode mode)
{
    switch (mode) {
    case DictationMode::Correct:
        return Localization::text(u"Исправить: модель чинит пунктуацию и грамматику надиктованного."_s);
    case DictationMode::Email:
        return Localization::text(u"Письмо: модель оформляет надиктованное как готовый email."_s);
    case DictationMode::Prompt:
        return Localization::text(
            u"Промпт: надиктованное выполняется моделью как запрос; вставляется результат."_s);
    }
    Q_UNREACHABLE();
}

} // namespace orvane::DictationModeTexts
