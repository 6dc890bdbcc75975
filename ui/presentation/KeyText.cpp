#include "ui/presentation/KeyText.h"

#include "base/localization/Localization.h"
#include "desktop/KeyTap.h"
#include "desktop/ShortcutTexts.h"
#include "settings/AppSettings.h"

#include <QStringList>

using namespace Qt::StringLiterals;

namespace orvane {

using Localization::text;

namespace {

/// Of the key that is pressed twice, the one that is pressed once, and what gives a dictation up.
QStringList howToDictate(const QString &twice, const QString &once, bool escapes)
{
    QStringList sentences;
    if (!twice.isEmpty())
        sentences
            << text(u"Нажмите %1 дважды, чтобы начать, и ещё раз дважды, чтобы вставить текст.").arg(twice);
    if (!once.isEmpty())
        sentences << (twice.isEmpty() ? text(u"Нажмите %1, чтобы начать, и ещё раз, чтобы вставить текст.")
                                      : text(u"То же делает %1."))
                         .arg(once);
    sentences << (escapes ? text(u"Esc отменяет.") : text(u"Отменяет ✕ на индикаторе."));
    return sentences;
}

QString textOfGiven(const Shortcuts &shortcuts, bool escapes)
{
    QStringList sentences;
    if (!ShortcutTexts::keys(shortcuts).isEmpty())
        sentences = howToDictate(shortcuts.twice, shortcuts.once, escapes);
    if (!shortcuts.taken.isEmpty())
        sentences << text(u"Уже занято на рабочем столе: %1.").arg(shortcuts.taken.join(u", "_s));
    sentences << ShortcutTexts::howToChange(shortcuts.giver);
    return sentences.join(u' ');
}

} // namespace

QString keyText(const AppSettings &settings, const KeyTap &keys)
{
    if (!keys.isActive() && keys.canBeSetUp())
        return text(u"Клавиши ещё не назначены: в меню Orvane выберите «Назначить клавиши диктовки…».");
    if (!keys.isActive())
        return text(
            u"Этот рабочий стол не даёт программам слушать клавиши. Назначьте в его настройках сочетание "
            u"клавиш для команды «orvane toggle»: первое нажатие начнёт диктовку, второе закончит.");
    if (const auto shortcuts = keys.shortcuts())
        return textOfGiven(*shortcuts, !keys.escapeIsMissing());
    const QString name = settings.dictationTriggerName();
    if (!keys.has(settings.dictationTrigger()))
        return text(u"В раскладке клавиатуры нет клавиши «%1» — выберите другую.").arg(name);
    const QString how = howToDictate(name, u"F5"_s, true).join(u' ');
    return !keys.grabIsMissing() ? how : how + u' ' + text(u"Сейчас F5 или Esc заняты другой программой.");
}

} // namespace orvane
