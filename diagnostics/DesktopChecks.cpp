#include "diagnostics/DesktopChecks.h"

#include "base/OneTimeEvent.h"
#include "base/localization/Localization.h"
#include "desktop/KeyTap.h"
#include "desktop/PasteKeys.h"
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

CheckResult heardBy(const KeyTap &tap, TriggerKey trigger)
{
    if (!tap.isActive())
        return {.state = State::Bad, .text = keyAdvice(qEnvironmentVariable("XDG_CURRENT_DESKTOP"))};
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
    if (PasteKeys::canBePressed())
        return {.state = State::Good, .text = text(u"Текст вставляется туда, где стоит курсор.")};
    return {.state = State::Bad,
            .text =
                text(u"Программам нельзя нажимать здесь клавиши: текст ждёт в буфере обмена, вставьте его "
                     "сочетанием Ctrl+V.")};
}

} // namespace orvane::DesktopChecks
