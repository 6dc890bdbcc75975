#pragma once

#include "settings/StoredChoices.h"
#include "settings/TranscriptionLanguage.h"

#include <QObject>
#include <QString>
#include <QStringList>

#include <optional>

namespace orvane {

class UserDefaults;

/// The user's preferences, read once and observable; each change holds at once. Values of the wrong
/// type in the store count as absent. Main thread.
class AppSettings : public QObject
{
    Q_OBJECT
    Q_PROPERTY(
        QString selectedModelID READ selectedModelID WRITE setSelectedModelID NOTIFY selectedModelIDChanged)
    Q_PROPERTY(QString languageCode READ languageCode WRITE setLanguageCode NOTIFY languageCodeChanged)
    Q_PROPERTY(bool detectSpeakers READ detectSpeakers WRITE setDetectSpeakers NOTIFY detectSpeakersChanged)
    Q_PROPERTY(bool textCorrectionEnabled READ textCorrectionEnabled WRITE setTextCorrectionEnabled NOTIFY
                   textCorrectionEnabledChanged)
    Q_PROPERTY(orvane::CorrectionEngine correctionEngine READ correctionEngine WRITE setCorrectionEngine
                   NOTIFY correctionEngineChanged)
    Q_PROPERTY(QString correctionModelID READ correctionModelID WRITE setCorrectionModelID NOTIFY
                   correctionModelIDChanged)
    Q_PROPERTY(orvane::TriggerKey dictationTrigger READ dictationTrigger WRITE setDictationTrigger NOTIFY
                   dictationTriggerChanged)
    Q_PROPERTY(
        bool correctDictation READ correctDictation WRITE setCorrectDictation NOTIFY correctDictationChanged)
    Q_PROPERTY(orvane::DictationMode dictationMode READ dictationMode WRITE setDictationMode NOTIFY
                   dictationModeChanged)
    Q_PROPERTY(bool shareAnonymousStats READ shareAnonymousStats WRITE setShareAnonymousStats NOTIFY
                   shareAnonymousStatsChanged)
    Q_PROPERTY(QString correctionPrompt READ correctionPrompt WRITE setCorrectionPrompt NOTIFY
                   correctionPromptChanged)
    Q_PROPERTY(QString interfaceLanguage READ interfaceLanguage WRITE setInterfaceLanguage NOTIFY
                   interfaceLanguageChanged)
    Q_PROPERTY(QStringList terminalClasses READ terminalClasses WRITE setTerminalClasses NOTIFY
                   terminalClassesChanged)
    Q_PROPERTY(bool showActivityPanel READ showActivityPanel WRITE setShowActivityPanel NOTIFY
                   showActivityPanelChanged)
    Q_PROPERTY(bool showsLiveText READ showsLiveText WRITE setShowsLiveText NOTIFY showsLiveTextChanged)
    Q_PROPERTY(
        QString modelRepository READ modelRepository WRITE setModelRepository NOTIFY modelRepositoryChanged)
    Q_PROPERTY(QString dictationTriggerName READ dictationTriggerName NOTIFY dictationTriggerNameChanged)
    Q_PROPERTY(orvane::TranscriptionLanguage language READ language NOTIFY languageChanged)

public:
    /// Also sets the interface language of the process. `defaults` outlives this.
    explicit AppSettings(UserDefaults &defaults, QObject *parent = nullptr);

    /// The recognition model to use; empty leaves the choice to the catalogue.
    [[nodiscard]] QString selectedModelID() const { return m_selectedModelID; }
    /// The language of speech, as stored: possibly a code that no language has.
    [[nodiscard]] QString languageCode() const { return m_languageCode; }
    /// None while the user has chosen no language.
    [[nodiscard]] std::optional<QString> storedLanguageCode() const;
    [[nodiscard]] bool detectSpeakers() const { return m_detectSpeakers; }
    [[nodiscard]] bool textCorrectionEnabled() const { return m_textCorrectionEnabled; }
    [[nodiscard]] CorrectionEngine correctionEngine() const { return m_correctionEngine; }
    /// The downloaded language model to use; empty leaves the choice to its catalogue.
    [[nodiscard]] QString correctionModelID() const { return m_correctionModelID; }
    /// The key whose double press starts a dictation.
    [[nodiscard]] TriggerKey dictationTrigger() const { return m_dictationTrigger; }
    [[nodiscard]] bool correctDictation() const { return m_correctDictation; }
    [[nodiscard]] DictationMode dictationMode() const { return m_dictationMode; }
    [[nodiscard]] bool shareAnonymousStats() const { return m_shareAnonymousStats; }
    /// What the language model is told to do with a text.
    [[nodiscard]] QString correctionPrompt() const { return m_correctionPrompt; }
    /// "ru" or "en".
    [[nodiscard]] QString interfaceLanguage() const { return m_interfaceLanguage; }
    /// Classes of windows that the user has found to be terminals that the program does not know.
    [[nodiscard]] QStringList terminalClasses() const { return m_terminalClasses; }
    [[nodiscard]] bool showActivityPanel() const { return m_showActivityPanel; }
    /// Whether the indicator of a dictation shows the words so far.
    [[nodiscard]] bool showsLiveText() const { return m_showsLiveText; }
    /// Where models are downloaded from when the build does not say; empty while the user has not either.
    [[nodiscard]] QString modelRepository() const { return m_modelRepository; }
    /// The user has seen the page for the first start to its end.
    [[nodiscard]] bool firstStartDone() const;

    void setSelectedModelID(const QString &id);
    void setLanguageCode(const QString &code);
    void setDetectSpeakers(bool on);
    void setTextCorrectionEnabled(bool on);
    void setCorrectionEngine(CorrectionEngine engine);
    void setCorrectionModelID(const QString &id);
    void setDictationTrigger(TriggerKey key);
    void setCorrectDictation(bool on);
    void setDictationMode(DictationMode mode);
    void setShareAnonymousStats(bool on);
    void setCorrectionPrompt(const QString &prompt);
    void setInterfaceLanguage(const QString &code);
    void setTerminalClasses(const QStringList &classes);
    void setShowActivityPanel(bool on);
    void setShowsLiveText(bool on);
    void setModelRepository(const QString &address);
    void setFirstStartDone();

    /// The trigger's key as the keyboard calls it, in the interface language.
    [[nodiscard]] QString dictationTriggerName() const;
    /// The language of languageCode; "auto" when there is none.
    [[nodiscard]] TranscriptionLanguage language() const;

    /// Why the last changes are not on disk, one sentence; empty when they are or will be.
    [[nodiscard]] QString storageError() const;

    /// The prompt of a fresh installation.
    [[nodiscard]] static QString defaultCorrectionPrompt();

Q_SIGNALS:
    void selectedModelIDChanged();
    void languageCodeChanged();
    void detectSpeakersChanged();
    void textCorrectionEnabledChanged();
    void correctionEngineChanged();
    void correctionModelIDChanged();
    void dictationTriggerChanged();
    void correctDictationChanged();
    void dictationModeChanged();
    void shareAnonymousStatsChanged();
    void correctionPromptChanged();
    void interfaceLanguageChanged();
    void terminalClassesChanged();
    void showActivityPanelChanged();
    void showsLiveTextChanged();
    void modelRepositoryChanged();
    void dictationTriggerNameChanged();
    void languageChanged();
    void storageErrorChanged();

private:
    using Signal = void (AppSettings::*)();

    /// False when the value was the same before.
    template <typename T>
    bool change(T &member, const T &value, const QString &key, Signal changed);

    UserDefaults &m_defaults;
    QString m_selectedModelID;
    QString m_languageCode;
    bool m_detectSpeakers;
    bool m_textCorrectionEnabled;
    CorrectionEngine m_correctionEngine;
    QString m_correctionModelID;
    TriggerKey m_dictationTrigger;
    bool m_correctDictation;
    DictationMode m_dictationMode;
    bool m_shareAnonymousStats;
    QString m_correctionPrompt;
    QString m_interfaceLanguage;
    QStringList m_terminalClasses;
    bool m_showActivityPanel;
    bool m_showsLiveText;
    QString m_modelRepository;
};

} // namespace orvane
