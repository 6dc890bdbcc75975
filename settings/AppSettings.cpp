#include "settings/AppSettings.h"

#include "base/localization/Localization.h"
#include "settings/TriggerName.h"
#include "settings/UserDefaults.h"

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

namespace Key {
const QString selectedModelID = u"selectedModelID"_s;
const QString languageCode = u"dictationLanguage"_s;
const QString detectSpeakers = u"detectSpeakers"_s;
const QString textCorrectionEnabled = u"textCorrectionEnabled"_s;
const QString correctionEngine = u"correctionEngine"_s;
const QString correctionModelID = u"correctionModelID"_s;
const QString dictationTrigger = u"dictationTrigger"_s;
const QString correctDictation = u"correctDictation"_s;
const QString dictationMode = u"dictationMode"_s;
const QString shareAnonymousStats = u"shareAnonymousStats"_s;
const QString correctionPrompt = u"correctionPrompt"_s;
const QString interfaceLanguage = u"interfaceLanguage"_s;
const QString terminalClasses = u"terminalClasses"_s;
const QString showActivityPanel = u"showActivityPanel"_s;
const QString showsLiveText = u"showsLiveText"_s;
const QString modelRepository = u"modelRepository"_s;
const QString firstStartDone = u"firstStartDone"_s;
} // namespace Key

template <typename T>
QVariant stored(const T &value)
{
    if constexpr (std::is_enum_v<T>)
        return storedForm(value);
    else if constexpr (std::is_same_v<T, QStringList>)
        return QVariantList(value.begin(), value.end()); // as a list is read back
    else
        return value;
}

} // namespace

AppSettings::AppSettings(UserDefaults &defaults, QObject *parent)
    : QObject(parent),
      m_defaults(defaults),
      m_selectedModelID(defaults.string(Key::selectedModelID).value_or(QString())),
      m_languageCode(defaults.string(Key::languageCode).value_or(u"ru"_s)),
      m_detectSpeakers(defaults.boolean(Key::detectSpeakers).value_or(false)),
      m_textCorrectionEnabled(defaults.boolean(Key::textCorrectionEnabled).value_or(true)),
      m_correctionEngine(correctionEngineFrom(defaults.string(Key::correctionEngine).value_or(QString()))),
      m_correctionModelID(defaults.string(Key::correctionModelID).value_or(QString())),
      m_dictationTrigger(triggerKeyFrom(defaults.string(Key::dictationTrigger).value_or(QString()))),
      m_correctDictation(defaults.boolean(Key::correctDictation).value_or(false)),
      m_dictationMode(dictationModeFrom(defaults.string(Key::dictationMode).value_or(QString()))),
      m_shareAnonymousStats(defaults.boolean(Key::shareAnonymousStats).value_or(false)),
      m_correctionPrompt(defaults.string(Key::correctionPrompt).value_or(defaultCorrectionPrompt())),
      m_interfaceLanguage(defaults.string(Key::interfaceLanguage).value_or(u"ru"_s)),
      m_terminalClasses(defaults.value(Key::terminalClasses).toStringList()),
      m_showActivityPanel(defaults.boolean(Key::showActivityPanel).value_or(true)),
      m_showsLiveText(defaults.boolean(Key::showsLiveText).value_or(true)),
      m_modelRepository(defaults.string(Key::modelRepository).value_or(QString()))
{
    Localization::setLanguage(m_interfaceLanguage);
    connect(&defaults, &UserDefaults::errorChanged, this, &AppSettings::storageErrorChanged);
}

template <typename T>
bool AppSettings::change(T &member, const T &value, const QString &key, Signal changed)
{
    // A default that is chosen is stored too: it then outlives a change of the default.
    const QVariant before = m_defaults.value(key);
    const QVariant after = stored(value);
    if (before.typeId() != after.typeId() || before != after) // 1 equals true, but is no boolean
        m_defaults.set(key, after);
    if (member == value)
        return false;
    member = value;
    Q_EMIT(this->*changed)
    ();
    return true;
}

void AppSettings::setSelectedModelID(const QString &id)
{
    change(m_selectedModelID, id, Key::selectedModelID, &AppSettings::selectedModelIDChanged);
}

void AppSettings::setLanguageCode(const QString &code)
{
    if (change(m_languageCode, code, Key::languageCode, &AppSettings::languageCodeChanged))
        Q_EMIT languageChanged();
}

std::optional<QString> AppSettings::storedLanguageCode() const
{
    return m_defaults.string(Key::languageCode);
}

void AppSettings::setDetectSpeakers(bool on)
{
    change(m_detectSpeakers, on, Key::detectSpeakers, &AppSettings::detectSpeakersChanged);
}

void AppSettings::setTextCorrectionEnabled(bool on)
{
    change(m_textCorrectionEnabled, on, Key::textCorrectionEnabled,
           &AppSettings::textCorrectionEnabledChanged);
}

void AppSettings::setCorrectionEngine(CorrectionEngine engine)
{
    change(m_correctionEngine, engine, Key::correctionEngine, &AppSettings::correctionEngineChanged);
}

void AppSettings::setCorrectionModelID(const QString &id)
{
    change(m_correctionModelID, id, Key::correctionModelID, &AppSettings::correctionModelIDChanged);
}

void AppSettings::setDictationTrigger(TriggerKey key)
{
    if (change(m_dictationTrigger, key, Key::dictationTrigger, &AppSettings::dictationTriggerChanged))
        Q_EMIT dictationTriggerNameChanged();
}

void AppSettings::setCorrectDictation(bool on)
{
    change(m_correctDictation, on, Key::correctDictation, &AppSettings::correctDictationChanged);
}

void AppSettings::setDictationMode(DictationMode mode)
{
    change(m_dictationMode, mode, Key::dictationMode, &AppSettings::dictationModeChanged);
}

void AppSettings::setShareAnonymousStats(bool on)
{
    change(m_shareAnonymousStats, on, Key::shareAnonymousStats, &AppSettings::shareAnonymousStatsChanged);
}

void AppSettings::setCorrectionPrompt(const QString &prompt)
{
    change(m_correctionPrompt, prompt, Key::correctionPrompt, &AppSettings::correctionPromptChanged);
}

void AppSettings::setInterfaceLanguage(const QString &code)
{
    // Set before the signals, so that what they refresh is read in the new language.
    Localization::setLanguage(code);
    if (!change(m_interfaceLanguage, code, Key::interfaceLanguage, &AppSettings::interfaceLanguageChanged))
        return;
    Q_EMIT dictationTriggerNameChanged();
    Q_EMIT languageChanged();
}

void AppSettings::setTerminalClasses(const QStringList &classes)
{
    change(m_terminalClasses, classes, Key::terminalClasses, &AppSettings::terminalClassesChanged);
}

void AppSettings::setShowActivityPanel(bool on)
{
    change(m_showActivityPanel, on, Key::showActivityPanel, &AppSettings::showActivityPanelChanged);
}

void AppSettings::setShowsLiveText(bool on)
{
    change(m_showsLiveText, on, Key::showsLiveText, &AppSettings::showsLiveTextChanged);
}

void AppSettings::setModelRepository(const QString &address)
{
    change(m_modelRepository, address, Key::modelRepository, &AppSettings::modelRepositoryChanged);
}

bool AppSettings::firstStartDone() const
{
    return m_defaults.boolean(Key::firstStartDone).value_or(false);
}

void AppSettings::setFirstStartDone()
{
    m_defaults.set(Key::firstStartDone, true);
}

QString AppSettings::dictationTriggerName() const
{
    return triggerName(m_dictationTrigger).toString();
}

QString AppSettings::storageError() const
{
    return m_defaults.error();
}

TranscriptionLanguage AppSettings::language() const
{
    return TranscriptionLanguage::withCode(m_languageCode);
}

QString AppSettings::defaultCorrectionPrompt()
{
    return u"Ты — корректор текста из распознавания речи. Задача: исправить пунктуацию, заглавные буквы, "
           u"орфографию и явные ошибки распознавания; расставить абзацы по смыслу.\n"
           u"Правила:\n"
           u"- смысл НЕ меняй; ничего не добавляй, не убирай, не пересказывай;\n"
           u"- сохрани язык оригинала;\n"
           u"- выведи ТОЛЬКО исправленный текст, без пояснений."_s;
}

} // namespace orvane
