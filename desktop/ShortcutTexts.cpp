#include "desktop/ShortcutTexts.h"

#include "base/localization/Localization.h"

#include <QStringList>

using namespace Qt::StringLiterals;

namespace orvane::ShortcutTexts {

using Giver = Shortcuts::Giver;
using Localization::text;

namespace {

QString nameOf(Giver giver)
{
    switch (giver) {
    case Giver::Plasma:
        return u"Plasma"_s;
    case Giver::Sway:
        return u"sway"_s;
    case Giver::Gnome:
        return u"GNOME"_s;
    case Giver::Portal:
        return text(u"рабочий стол");
    }
    Q_UNREACHABLE();
}

} // namespace

QString keys(const Shortcuts &shortcuts)
{
    QStringList keys;
    if (!shortcuts.twice.isEmpty())
        keys.append(text(u"%1 дважды").arg(shortcuts.twice));
    if (!shortcuts.once.isEmpty())
        keys.append(shortcuts.once);
    return keys.join(text(u" или "));
}

QString keysAndGiver(const Shortcuts &shortcuts)
{
    return u"%1 (%2)"_s.arg(keys(shortcuts), nameOf(shortcuts.giver));
}

QString howToChange(Giver giver)
{
    switch (giver) {
    case Giver::Plasma:
        return text(u"Сменить их можно в «Параметры системы → Комбинации клавиш → Orvane».");
    case Giver::Sway:
        return text(u"Другие клавиши назначьте в настройках sway командам orvane tap и orvane toggle.");
    case Giver::Portal:
        return text(u"Сменить их можно в «Настройки → Приложения → Orvane → Глобальные комбинации клавиш».");
    case Giver::Gnome:
        return text(u"Сменить их можно в «Настройки → Клавиатура → Комбинации клавиш».");
    }
    Q_UNREACHABLE();
}

} // namespace orvane::ShortcutTexts
