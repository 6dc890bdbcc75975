#include "ui/DictationHUDModel.h"

#include "base/localization/Localization.h"
#include "dictation/DictationModeTexts.h"
#include "settings/AppSettings.h"

#include <QFontInfo>
#include <QGuiApplication>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

constexpr qreal liveTextWidth = 340; // pixels
constexpr qsizetype liveLineCount = 2;
constexpr int liveTextSize = 13; // pixels

QString subtitleWhile(DictationMode mode)
{
    switch (mode) {
    case DictationMode::Correct:
        return Localization::text(u"Пунктуация и грамматика");
    case DictationMode::Email:
        return Localization::text(u"Оформляю как письмо");
    case DictationMode::Prompt:
        return Localization::text(u"Выполняю как запрос");
    }
    Q_UNREACHABLE();
}

QString iconWhile(DictationMode mode)
{
    switch (mode) {
    case DictationMode::Correct:
        return u"text-check"_s;
    case DictationMode::Email:
        return u"envelope"_s;
    case DictationMode::Prompt:
        return u"wand"_s;
    }
    Q_UNREACHABLE();
}

QStringList forEachMode(QString (*text)(DictationMode))
{
    QStringList texts;
    for (const DictationMode mode : dictationModes)
        texts << text(mode);
    return texts;
}

} // namespace

DictationHUDModel::DictationHUDModel(AppSettings &settings) : m_settings(settings)
{
    connect(&settings, &AppSettings::dictationModeChanged, this, &DictationHUDModel::selectedChipChanged);
    connect(&settings, &AppSettings::showsLiveTextChanged, this, &DictationHUDModel::liveTextChanged);
    connect(&settings, &AppSettings::interfaceLanguageChanged, this, [this] {
        Q_EMIT contentChanged();
        Q_EMIT chipsChanged();
    });
}

void DictationHUDModel::setState(DictationState state, std::optional<DictationMode> processing)
{
    if (m_state == state && m_processing == processing)
        return;
    m_state = state;
    m_processing = processing;
    Q_EMIT contentChanged();
}

void DictationHUDModel::setDeviceIsSilent(bool silent)
{
    if (m_deviceIsSilent == silent)
        return;
    m_deviceIsSilent = silent;
    Q_EMIT contentChanged();
}

void DictationHUDModel::setKeys(const Keys &keys)
{
    if (m_keys == keys)
        return;
    m_keys = keys;
    Q_EMIT contentChanged();
}

void DictationHUDModel::setWaveform(const QList<float> &levels)
{
    if (m_waveform == levels)
        return;
    m_waveform = levels;
    Q_EMIT waveformChanged();
}

void DictationHUDModel::setLiveText(const LiveText &text)
{
    if (!m_liveText) {
        if ((text.settled + text.unsettled).trimmed().isEmpty())
            return;
        m_liveText.emplace(liveTextFont(), liveTextWidth, liveLineCount);
    }
    m_liveText->setText(text);
    Q_EMIT liveTextChanged();
}

void DictationHUDModel::clearLiveText()
{
    m_liveText.reset();
    Q_EMIT liveTextChanged();
}

void DictationHUDModel::setNotice(const QString &text)
{
    if (m_notice == text)
        return;
    m_notice = text;
    Q_EMIT contentChanged();
}

QString DictationHUDModel::title() const
{
    switch (m_state) {
    case DictationState::Idle:
    case DictationState::Starting:
        return u"Orvane"_s;
    case DictationState::Recording:
        return Localization::text(u"Слушаю…");
    case DictationState::Transcribing:
        return Localization::text(u"Распознаю…");
    case DictationState::Correcting:
        return m_processing ? DictationModeTexts::processingStatus(*m_processing)
                            : Localization::text(u"Обрабатываю…");
    }
    Q_UNREACHABLE();
}

QString DictationHUDModel::subtitle() const
{
    if (subtitleIsWarning())
        return Localization::text(u"Нет звука с микрофона — проверьте его");
    switch (m_state) {
    case DictationState::Idle:
    case DictationState::Starting:
        return Localization::text(u"Готов");
    case DictationState::Recording:
        return hint();
    case DictationState::Correcting:
        if (m_processing)
            return subtitleWhile(*m_processing);
        [[fallthrough]];
    case DictationState::Transcribing:
        return Localization::text(u"Подождите немного");
    }
    Q_UNREACHABLE();
}

QString DictationHUDModel::hint() const
{
    if (m_keys.twice.isEmpty() && m_keys.once.isEmpty())
        return Localization::text(u"orvane toggle или меню — готово · ✕ — отмена");
    const QString key =
        m_keys.twice.isEmpty() ? m_keys.once : Localization::text(u"Дважды") + u' ' + m_keys.twice;
    return key + u" — "_s +
           (m_keys.escape ? Localization::text(u"готово · Esc — отмена")
                          : Localization::text(u"готово · ✕ — отмена"));
}

bool DictationHUDModel::needsCancel() const
{
    return !m_keys.escape && (isListening() || isWorking());
}

QString DictationHUDModel::cancelText() const
{
    return Localization::text(u"Отменить диктовку");
}

bool DictationHUDModel::subtitleIsWarning() const
{
    return isListening() && m_deviceIsSilent;
}

QString DictationHUDModel::iconName() const
{
    switch (m_state) {
    case DictationState::Idle:
    case DictationState::Starting:
    case DictationState::Recording:
        return u"mic"_s;
    case DictationState::Transcribing:
        return u"waveform"_s;
    case DictationState::Correcting:
        return m_processing ? iconWhile(*m_processing) : u"sparkles"_s;
    }
    Q_UNREACHABLE();
}

bool DictationHUDModel::isWorking() const
{
    return m_state == DictationState::Transcribing || m_state == DictationState::Correcting;
}

bool DictationHUDModel::hasLiveText() const
{
    return m_liveText && m_settings.showsLiveText();
}

QVariantList DictationHUDModel::liveLines() const
{
    QVariantList lines;
    if (!hasLiveText())
        return lines;
    for (const auto &[settled, unsettled] : m_liveText->lines())
        lines.append(QVariantMap{{u"settled"_s, settled}, {u"unsettled"_s, unsettled}});
    return lines;
}

QFont DictationHUDModel::liveTextFont()
{
    QFont font(fontFamily());
    font.setPixelSize(liveTextSize);
    return font;
}

QString DictationHUDModel::fontFamily()
{
    const QString intended = u"Inter"_s;
    return QFontInfo(QFont(intended)).family() == intended ? intended : QGuiApplication::font().family();
}

QStringList DictationHUDModel::chipTitles() const
{
    return forEachMode(DictationModeTexts::title);
}

QStringList DictationHUDModel::chipHelps() const
{
    return forEachMode(DictationModeTexts::description);
}

int DictationHUDModel::selectedChip() const
{
    return int(std::ranges::find(dictationModes, m_settings.dictationMode()) - dictationModes.begin());
}

void DictationHUDModel::selectChip(int chip)
{
    m_settings.setDictationMode(dictationModes.at(std::size_t(chip)));
}

void DictationHUDModel::setHoveredChip(int chip)
{
    if (m_hoveredChip == chip)
        return;
    m_hoveredChip = chip;
    Q_EMIT hoveredChipChanged();
}

} // namespace orvane
