#include "settings/TranscriptionLanguage.h"

#include "base/localization/Localization.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orvane {

QString TranscriptionLanguage::displayName() const
{
    return code == "auto"_L1 ? Localization::text(u"Автоопределение") : name;
}

const QList<TranscriptionLanguage> &TranscriptionLanguage::all()
{
    static const QList<TranscriptionLanguage> languages = {
        {u"auto"_s, u"Auto"_s},     {u"ru"_s, u"Русский"_s},   {u"en"_s, u"English"_s},
        {u"uk"_s, u"Українська"_s}, {u"de"_s, u"Deutsch"_s},   {u"fr"_s, u"Français"_s},
        {u"es"_s, u"Español"_s},    {u"it"_s, u"Italiano"_s},  {u"pt"_s, u"Português"_s},
        {u"tr"_s, u"Türkçe"_s},     {u"ar"_s, u"العربية"_s},   {u"fa"_s, u"فارسی"_s},
        {u"tg"_s, u"Тоҷикӣ"_s},     {u"uz"_s, u"Oʻzbekcha"_s}, {u"kk"_s, u"Қазақша"_s},
        {u"zh"_s, u"中文"_s},       {u"ja"_s, u"日本語"_s},    {u"ko"_s, u"한국어"_s},
        {u"hi"_s, u"हिन्दी"_s},
    };
    return languages;
}

TranscriptionLanguage TranscriptionLanguage::withCode(const QString &code)
{
    const auto found = std::ranges::find(all(), code, &TranscriptionLanguage::code);
    return found == all().end() ? all().first() : *found;
}

} // namespace orvane
