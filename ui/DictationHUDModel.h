#pragma once

#include "dictation/DictationState.h"
#include "settings/StoredChoices.h"
#include "ui/LiveTextLines.h"

#include <QFont>
#include <QList>
#include <QObject>
#include <QStringList>
#include <QVariantList>

#include <optional>

namespace orvane {

class AppSettings;

/// What the dictation indicator shows, ready to be put on the screen. Main thread; needs a QGuiApplication.
class DictationHUDModel : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QString title READ title NOTIFY contentChanged)
    Q_PROPERTY(QString subtitle READ subtitle NOTIFY contentChanged)
    Q_PROPERTY(bool subtitleIsWarning READ subtitleIsWarning NOTIFY contentChanged)
    Q_PROPERTY(QString iconName READ iconName NOTIFY contentChanged)
    Q_PROPERTY(bool isListening READ isListening NOTIFY contentChanged)
    Q_PROPERTY(bool isWorking READ isWorking NOTIFY contentChanged)
    Q_PROPERTY(QString notice READ notice NOTIFY contentChanged)
    Q_PROPERTY(bool needsCancel READ needsCancel NOTIFY contentChanged)
    Q_PROPERTY(QString cancelText READ cancelText NOTIFY contentChanged)
    Q_PROPERTY(QStringList chipTitles READ chipTitles NOTIFY chipsChanged)
    Q_PROPERTY(QStringList chipHelps READ chipHelps NOTIFY chipsChanged)
    Q_PROPERTY(int selectedChip READ selectedChip NOTIFY selectedChipChanged)
    Q_PROPERTY(int hoveredChip READ hoveredChip WRITE setHoveredChip NOTIFY hoveredChipChanged)
    Q_PROPERTY(bool hasLiveText READ hasLiveText NOTIFY liveTextChanged)
    Q_PROPERTY(bool liveTextIsCut READ liveTextIsCut NOTIFY liveTextChanged)
    Q_PROPERTY(QVariantList liveLines READ liveLines NOTIFY liveTextChanged)
    Q_PROPERTY(QFont liveTextFont READ liveTextFont CONSTANT)
    Q_PROPERTY(QString fontFamily READ fontFamily CONSTANT)
    Q_PROPERTY(QList<float> waveform READ waveform NOTIFY waveformChanged)

public:
    /// The chips show and set the settings' dictation mode. `settings` outlives this.
    explicit DictationHUDModel(AppSettings &settings);

    /// `processing` is the mode that is carried out while Correcting; none when no mode applies.
    void setState(DictationState state, std::optional<DictationMode> processing = std::nullopt);
    void setDeviceIsSilent(bool silent);

    /// The keys that reach the dictation.
    struct Keys
    {
        QString twice{}; ///< what ends it when pressed twice; empty for none
        QString once{};  ///< the same, pressed once
        bool escape = true;
        bool operator==(const Keys &) const = default;
    };
    /// The hint names those that work only.
    void setKeys(const Keys &keys);
    /// The words so far. With the first ones the indicator grows, if the settings want that, and stays so
    /// until they are cleared, whatever becomes of them.
    void setLiveText(const LiveText &text);
    void clearLiveText();
    /// 0…1, the newest last.
    void setWaveform(const QList<float> &levels);
    /// Shown alone, in place of everything else, until it is empty again.
    void setNotice(const QString &text);

    [[nodiscard]] QString title() const;
    [[nodiscard]] QString subtitle() const;
    /// The subtitle tells what is wrong.
    [[nodiscard]] bool subtitleIsWarning() const;
    /// The name of a picture in ui/indicator/icons.
    [[nodiscard]] QString iconName() const;
    /// The waveform is worth showing.
    [[nodiscard]] bool isListening() const { return m_state == DictationState::Recording; }
    /// The user waits for an engine.
    [[nodiscard]] bool isWorking() const;
    [[nodiscard]] QString notice() const { return m_notice; }
    /// A dictation runs that no key gives up.
    [[nodiscard]] bool needsCancel() const;
    [[nodiscard]] QString cancelText() const;
    Q_INVOKABLE void cancel() { Q_EMIT cancelRequested(); }
    [[nodiscard]] QList<float> waveform() const { return m_waveform; }

    [[nodiscard]] bool hasLiveText() const;
    /// More was said than what liveLines() show.
    [[nodiscard]] bool liveTextIsCut() const { return m_liveText && m_liveText->isCut(); }
    /// Each with its "settled" words and the "unsettled" ones that follow, the last line last.
    [[nodiscard]] QVariantList liveLines() const;
    /// The lines are measured for it.
    [[nodiscard]] static QFont liveTextFont();
    /// Of all that is written.
    [[nodiscard]] static QString fontFamily();

    /// One for each mode, in the order of the enumeration.
    [[nodiscard]] QStringList chipTitles() const;
    [[nodiscard]] QStringList chipHelps() const;
    [[nodiscard]] int selectedChip() const;
    Q_INVOKABLE void selectChip(int chip);
    /// The chip under the pointer, −1 for none.
    [[nodiscard]] int hoveredChip() const { return m_hoveredChip; }
    void setHoveredChip(int chip);

Q_SIGNALS:
    void contentChanged();
    void chipsChanged();
    void selectedChipChanged();
    void hoveredChipChanged();
    void waveformChanged();
    void liveTextChanged();
    void cancelRequested();

private:
    [[nodiscard]] QString hint() const;

    AppSettings &m_settings;
    DictationState m_state = DictationState::Idle;
    std::optional<DictationMode> m_processing;
    bool m_deviceIsSilent = false;
    Keys m_keys;
    int m_hoveredChip = -1;
    QString m_notice;
    QList<float> m_waveform;
    /// From the first words to the end of the dictation.
    std::optional<LiveTextLines> m_liveText;
};

} // namespace orvane
