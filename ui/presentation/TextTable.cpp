#include "ui/presentation/TextTable.h"

#include "base/localization/Localization.h"
#include "settings/AppSettings.h"
#include "ui/presentation/SceneTable.h"

#include <algorithm>
#include <iterator>
#include <string_view>

namespace orvane {

TextTable::TextTable(const AppSettings &settings, QObject *parent) : QObject(parent), m_settings(settings)
{
    connect(&settings, &AppSettings::interfaceLanguageChanged, this, &TextTable::languageChanged);
}

QString TextTable::language() const
{
    return m_settings.interfaceLanguage();
}

QString TextTable::text(const QString &russian) const
{
    if (!Localization::isEnglish())
        return russian;
    const std::u16string_view wanted(reinterpret_cast<const char16_t *>(russian.utf16()),
                                     size_t(russian.size()));
    const auto found = std::ranges::find(sceneTable, wanted, &Localization::TextPair::russian);
    return found == std::end(sceneTable)
               ? Localization::translated(russian)
               : QString::fromUtf16(found->english.data(), qsizetype(found->english.size()));
}

} // namespace orvane
