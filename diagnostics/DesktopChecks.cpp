#include "diagnostics/DesktopChecks.h"

#include "base/OneTimeEvent.h"
#include "base/localization/Localization.h"
#include "desktop/DesktopSession.h"
#include "desktop/KeyTap.h"
#include "desktop/PasteAccess.h"
#include "desktop/PasteKeys.h"
#include "desktop/ShortcutTexts.h"
#include "settings/TriggerName.h"

#include <QGuiApplication>

#include <chrono>
#include <memory>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orvane::DesktopChecks {

using Localization::text;
using State = CheckResult::State;

namespace {

/// How long a tap may take to begin.
constexpr auto tapPatience = 2s;

bool hasScreen()
{
    const bool isGraphical = qobject_cast<QGuiApplication *>(QCoreApplication::instance()) != nullptr;
    const QString platform = QGuiApplication::platformName();
    return isGraphical && (platform == "xcb"_L1 || platform.startsWith("wayland"_L1));
}

CheckResult givenBy(const Shortcuts &shortcuts)
{
    QStringList sentences;
    if (!ShortcutTexts::keys(shortcuts).isEmpty())
        sentences << text(u"Слышны: %1.").arg(ShortcutTexts::keysAndGiver(shortcuts));
    if (!shortcuts.taken.isEmpty())
        sentences << text(u"Уже занято на рабочем столе: %1.").arg(shortcuts.taken.join(u", "_s));
    const State state = ShortcutTexts::keys(shortcuts).isEmpty() ? State::Bad : State::Good;
    sentences << ShortcutTexts::howToChange(shortcuts.giver);
    return {.state = state, .text = sentences.join(u' ')};
}

CheckResult heardBy(const KeyTap &tap, TriggerKey trigger)
{
    if (!tap.isActive() && tap.canBeSetUp())
        return {.state = State::Bad,
                .text =
                    text(u"Клавиши ещё не назначены: в меню Orvane выберите «Назначить клавиши диктовки…».")};
    if (!tap.isActive())
        return {.state = State::Bad, .text = keyAdvice(qEnvironmentVariable("XDG_CURRENT_DESKTOP"))};
    if (const auto shortcuts = tap.shortcuts())
        return givenBy(*shortcuts);
    const QString key = triggerName(trigger).toString();
    if (!tap.has(trigger)) {
        return {.state = State::Bad,
                .text = text(u"В раскладке нет клавиши «%1»: выберите в настройках другую.").arg(key)};
    }
    return {.state = State::Good, .text = text(u"Слышны: «%1» дважды начинает диктовку.").arg(key)};
}

} // namespace

QString keyAdvice(const QString &desktop)
{
    if (desktop.contains("GNOME"_L1, Qt::CaseInsensitive)) {
        return text(
            u"Программам клавиши здесь не слышны: в «Настройки → Клавиатура → Комбинации клавиш» назначьте "
            "клавишу команде orvane toggle.");
    }
    if (desktop.contains("KDE"_L1, Qt::CaseInsensitive)) {
        return text(u"Программам клавиши здесь не слышны: в «Параметры системы → Комбинации клавиш» "
                    u"назначьте клавишу "
                    "команде orvane toggle.");
    }
    return text(
        u"Программам клавиши здесь не слышны: в настройках рабочего стола назначьте клавишу команде orvane "
        "toggle.");
}

QCoro::Task<CheckResult> keys(const KeyTap *installed, TriggerKey trigger, std::stop_token stop)
{
    if (!hasScreen())
        co_return CheckResult{.text = text(u"Нет экрана: клавиши здесь не проверить.")};
    if (installed) {
        CheckResult result = heardBy(*installed, trigger);
        if (result.state == State::Good && installed->grabIsMissing()) {
            result = {.state = State::Bad,
                      .text = text(u"F5 или Esc держит другая программа: освободите их в её настройках.")};
        }
        co_return result;
    }
    // One of this process would take the keys from the running application.
    if (DesktopSession::ofThisProcess().isWayland())
        co_return CheckResult{
            .text = text(u"Клавиши здесь даёт рабочий стол, пока Orvane работает: какие, говорит его меню.")};
    // What this one cannot have, the running application may hold.
    const std::unique_ptr<KeyTap> tap = KeyTap::forDisplay();
    const std::shared_ptr<OneTimeEvent> begun = OneTimeEvent::create();
    QObject::connect(tap.get(), &KeyTap::activeChanged, tap.get(), [begun] { begun->happen(); });
    tap->install();
    if (!tap->isActive() && PasteKeys::canBePressed())
        static_cast<void>(co_await begun->waitFor(tapPatience, stop));
    const CheckResult result = heardBy(*tap, trigger);
    tap->uninstall();
    co_return result;
}

CheckResult paste()
{
    if (!hasScreen())
        return {.text = text(u"Нет экрана: вставку текста здесь не проверить.")};
    switch (PasteAccess::state()) {
    case PasteAccess::State::Granted:
        return {.state = State::Good, .text = text(u"Текст вставляется туда, где стоит курсор.")};
    case PasteAccess::State::ToBeAsked:
        return {.state = State::Bad,
                .text = text(u"Вставку нужно разрешить: «Разрешить вставку текста…» в меню Orvane.")};
    case PasteAccess::State::None:
        break;
    }
    return {.state = State::Bad,
            .text =
                text(u"Программам нельзя нажимать здесь клавиши: текст ждёт в буфере обмена, вставьте его "
                     "сочетанием Ctrl+V.")};
}

} // namespace orvane::DesktopChecks
