#include "ui/presentation/General.h"

#include "base/Async.h"
#include "base/localization/Localization.h"
#include "desktop/KeyTap.h"
#include "dictation/DictationModeTexts.h"
#include "settings/AppSettings.h"
#include "settings/BuildInfo.h"
#include "settings/TriggerName.h"
#include "ui/presentation/KeyText.h"
#include "update/UpdateChecker.h"

#include <algorithm>
#include <optional>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

template <typename Choices, typename Choice>
int indexIn(const Choices &choices, Choice choice)
{
    return int(std::ranges::find(choices, choice) - choices.begin());
}

template <typename Choices>
std::optional<typename Choices::value_type> at(const Choices &choices, int index)
{
    return index >= 0 && index < std::ssize(choices) ? std::optional(choices[size_t(index)]) : std::nullopt;
}

} // namespace

General::General(AppSettings &settings, const KeyTap &keys, UpdateChecker &updates, QObject *parent)
    : QObject(parent),
      m_settings(settings),
      m_keys(keys),
      m_updates(updates)
{
    connect(&keys, &KeyTap::activeChanged, this, &General::keyChanged);
    connect(&keys, &KeyTap::keysChanged, this, &General::keyChanged);
    connect(&keys, &KeyTap::grabIsMissingChanged, this, &General::keyChanged);
    connect(&settings, &AppSettings::dictationTriggerNameChanged, this, &General::keyChanged);
    connect(&settings, &AppSettings::dictationModeChanged, this, &General::modeChanged);
    connect(&m_autostart, &Autostart::changed, this, &General::autostartChanged);
    connect(&updates, &UpdateChecker::availableChanged, this, &General::updateChanged);
    connect(&updates, &UpdateChecker::checkingChanged, this, &General::updateChanged);
    connect(&updates, &UpdateChecker::downloadingChanged, this, &General::updateChanged);
    connect(&settings, &AppSettings::storageErrorChanged, this, &General::storageErrorChanged);
    connect(&settings, &AppSettings::interfaceLanguageChanged, this, [this] {
        Q_EMIT modeChanged();
        Q_EMIT autostartChanged();
        Q_EMIT updateChanged();
    });
}

QString General::keyText() const
{
    return orvane::keyText(m_settings, m_keys);
}

QStringList General::triggers() const
{
    QStringList names;
    for (const TriggerKey key : triggerKeys)
        names.append(triggerName(key).toString());
    return names;
}

int General::triggerIndex() const
{
    return indexIn(triggerKeys, m_settings.dictationTrigger());
}

void General::setTriggerIndex(int index)
{
    if (const auto key = at(triggerKeys, index))
        m_settings.setDictationTrigger(*key);
}

QString General::modeText() const
{
    return DictationModeTexts::description(m_settings.dictationMode());
}

QStringList General::modes() const
{
    QStringList titles;
    for (const DictationMode mode : dictationModes)
        titles.append(DictationModeTexts::title(mode));
    return titles;
}

int General::modeIndex() const
{
    return indexIn(dictationModes, m_settings.dictationMode());
}

void General::setModeIndex(int index)
{
    if (const auto mode = at(dictationModes, index))
        m_settings.setDictationMode(*mode);
}

QString General::autostartText() const
{
    return m_autostart.error().isEmpty()
               ? Localization::text(u"Без окон: только значок в области уведомлений.")
               : m_autostart.error();
}

QString General::versionText() const
{
    return u"%1 %2"_s.arg(BuildInfo::editionName, BuildInfo::version);
}

QString General::updateText() const
{
    if (m_updates.downloading())
        return Localization::text(u"Скачиваю обновление…");
    if (m_updates.checking())
        return Localization::text(u"Проверяю…");
    if (const auto &release = m_updates.available())
        return Localization::text(u"Доступна версия ") + release->version;
    return Localization::text(u"Новые версии ищутся раз в сутки.");
}

bool General::hasUpdate() const
{
    return m_updates.available().has_value();
}

bool General::isChecking() const
{
    return m_updates.checking() || m_updates.downloading();
}

void General::checkForUpdates()
{
    if (const auto release = m_updates.available())
        spawn(m_updates.offerDownload(*release));
    else
        spawn(m_updates.check(UpdateChecker::Mode::Interactive));
}

QString General::storageError() const
{
    return m_settings.storageError();
}

} // namespace orvane
