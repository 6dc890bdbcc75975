#include "ui/presentation/TextTable.h"

#include "base/localization/Localization.h"
#include "settings/AppSettings.h"
#include "ui/presentation/SceneTable.h"
#include "ui/presentation/Spans.h"

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
    return Localization::translated(russian, sceneTable);
}

QString TextTable::decimal(double number) const
{
    return Spans::decimal(number);
}

} // namespace orvane
