#include "ui/presentation/KeyText.h"

#include "base/localization/Localization.h"
#include "desktop/KeyTap.h"
#include "settings/AppSettings.h"

namespace orvane {

QString keyText(const AppSettings &settings, const KeyTap &keys)
{
    using Localization::text;
    if (!keys.isActive())
        return text(
            u"Этот рабочий стол не даёт программам слушать клавиши. Назначьте в его настройках сочетание "
            u"клавиш для команды «orvane toggle»: первое нажатие начнёт диктовку, второе закончит.");
    const QString name = settings.dictationTriggerName();
    if (!keys.has(settings.dictationTrigger()))
        return text(u"В раскладке клавиатуры нет клавиши «%1» — выберите другую.").arg(name);
    const QString how =
        text(u"Нажмите %1 дважды, чтобы начать, и ещё раз дважды, чтобы вставить текст. То же делает F5; "
             u"Esc отменяет.")
            .arg(name);
    return !keys.grabIsMissing() ? how : how + u' ' + text(u"Сейчас F5 или Esc заняты другой программой.");
}

} // namespace orvane
