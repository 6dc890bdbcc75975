#include "settings/StoredChoices.h"

using namespace Qt::StringLiterals;

namespace orvane {

QString storedForm(CorrectionEngine engine)
{
    return engine == CorrectionEngine::Local ? u"local"_s : u"apple"_s;
}

CorrectionEngine correctionEngineFrom(const QString &stored)
{
    return stored == u"local"_s ? CorrectionEngine::Local : CorrectionEngine::BuiltIn;
}

QString storedForm(DictationMode mode)
{
    switch (mode) {
    case DictationMode::Email:
        return u"email"_s;
    case DictationMode::Prompt:
        return u"prompt"_s;
    case DictationMode::Correct:
        break;
    }
    return u"correct"_s;
}

DictationMode dictationModeFrom(const QString &stored)
{
    for (const DictationMode mode : {DictationMode::Email, DictationMode::Prompt}) {
        if (stored == storedForm(mode))
            return mode;
    }
    return DictationMode::Correct;
}

QString storedForm(TriggerKey key)
{
    return key == TriggerKey::RightOption ? u"ropt"_s : u"rcmd"_s;
}

TriggerKey triggerKeyFrom(const QString &stored)
{
    return stored == u"ropt"_s ? TriggerKey::RightOption : TriggerKey::RightCommand;
}

} // namespace orvane
