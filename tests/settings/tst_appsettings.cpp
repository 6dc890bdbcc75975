#include "base/localization/Localization.h"
#include "settings/AppSettings.h"
#include "settings/UserDefaults.h"
#include "tests/support/Files.h"
#include "tests/support/Rows.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMetaProperty>
#include <QSignalSpy>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;
using namespace orvane;
using namespace orvane::test;

class TestAppSettings : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }

    void cleanup() { Localization::setLanguage(u"ru"_s); }

    void freshInstallation()
    {
        UserDefaults defaults(file());
        const AppSettings settings(defaults);
        QCOMPARE(settings.selectedModelID(), QString());
        QCOMPARE(settings.languageCode(), u"ru"_s);
        QCOMPARE(settings.language().name, u"Русский"_s);
        QVERIFY(!settings.detectSpeakers());
        QVERIFY(settings.textCorrectionEnabled());
        QCOMPARE(settings.correctionEngine(), CorrectionEngine::BuiltIn);
        QCOMPARE(settings.correctionModelID(), QString());
        QCOMPARE(settings.dictationTrigger(), TriggerKey::RightCommand);
        QVERIFY(!settings.correctDictation());
        QCOMPARE(settings.dictationMode(), DictationMode::Correct);
        QVERIFY(!settings.shareAnonymousStats());
        QVERIFY(settings.showActivityPanel());
        QVERIFY(settings.showsLiveText());
        QCOMPARE(settings.correctionPrompt(), AppSettings::defaultCorrectionPrompt());
        QCOMPARE(settings.correctionPrompt().count(u'\n'), 4);
        QCOMPARE(settings.interfaceLanguage(), u"ru"_s);
    }

    void wrongTypeGivesDefault_data()
    {
        const Rows<QByteArray> row("json");
        row("texts for booleans", R"({"textCorrectionEnabled": "false"})");
        row("objects and lists", R"({"textCorrectionEnabled": [false], "dictationLanguage": {"a": 1}})");
        row("numbers for texts", R"({"dictationLanguage": 7, "correctionEngine": 1})");
        row("dates for texts", QByteArray(R"({"dictationLanguage": {"$date": "2024-01-01T00:00:00Z"}})"));
    }

    void wrongTypeGivesDefault()
    {
        QFETCH(const QByteArray, json);
        store(json);
        UserDefaults defaults(file());
        const AppSettings settings(defaults);
        QVERIFY(settings.textCorrectionEnabled());
        QVERIFY(!settings.detectSpeakers());
        QCOMPARE(settings.languageCode(), u"ru"_s);
        QCOMPARE(settings.correctionEngine(), CorrectionEngine::BuiltIn);
    }

    void storedWords_data()
    {
        const Rows<QByteArray, CorrectionEngine, DictationMode> row("json", "engine", "mode");
        using Engine = CorrectionEngine;
        using Mode = DictationMode;
        row("local, email", R"({"correctionEngine": "local", "dictationMode": "email"})", Engine::Local,
            Mode::Email);
        row("apple, prompt", QByteArray(R"({"correctionEngine": "apple", "dictationMode": "prompt"})"),
            Engine::BuiltIn, Mode::Prompt);
        row("other case", R"({"correctionEngine": "Local", "dictationMode": "Email"})", Engine::BuiltIn,
            Mode::Correct);
        row("unknown", R"({"correctionEngine": "cloud", "dictationMode": "summary"})", Engine::BuiltIn,
            Mode::Correct);
    }

    void storedWords()
    {
        QFETCH(const QByteArray, json);
        store(json);
        UserDefaults defaults(file());
        const AppSettings settings(defaults);
        QTEST(settings.correctionEngine(), "engine");
        QTEST(settings.dictationMode(), "mode");
    }

    void everyPropertyIsStoredAndReported_data()
    {
        const Rows<QString, QVariant, QJsonValue> row("key", "value", "onDisk");

        const auto text = [&row](const char *property, const QString &key, const QString &value) {
            row(property, key, QVariant(value), QJsonValue(value));
        };
        const auto flag = [&row](const char *property, bool value) {
            row(property, QString::fromLatin1(property), QVariant(value), QJsonValue(value));
        };
        text("selectedModelID", u"selectedModelID"_s, u"large-v3"_s);
        text("languageCode", u"dictationLanguage"_s, u"kk"_s);
        flag("detectSpeakers", true);
        flag("textCorrectionEnabled", false);
        row("correctionEngine", u"correctionEngine"_s, QVariant::fromValue(CorrectionEngine::Local),
            QJsonValue(u"local"_s));
        text("correctionModelID", u"correctionModelID"_s, u"some-model"_s);
        row("dictationTrigger", u"dictationTrigger"_s, QVariant::fromValue(TriggerKey::RightOption),
            QJsonValue(u"ropt"_s));
        flag("correctDictation", true);
        row("dictationMode", u"dictationMode"_s, QVariant::fromValue(DictationMode::Prompt),
            QJsonValue(u"prompt"_s));
        flag("shareAnonymousStats", true);
        text("correctionPrompt", u"correctionPrompt"_s, u"Строка\n«вторая»\t\"\\ 🎙"_s);
        text("interfaceLanguage", u"interfaceLanguage"_s, u"en"_s);
        flag("showActivityPanel", false);
        flag("showsLiveText", false);
        text("modelRepository", u"modelRepository"_s, u"https://models.example.org"_s);
        row("terminalClasses", u"terminalClasses"_s, QVariant(QStringList{u"warp"_s}),
            QJsonValue(QJsonArray{u"warp"_s}));
    }

    void everyPropertyIsStoredAndReported()
    {
        QFETCH(const QString, key);
        QFETCH(const QVariant, value);
        QFETCH(const QJsonValue, onDisk);
        const char *property = QTest::currentDataTag();

        UserDefaults defaults(file());
        AppSettings settings(defaults);
        const QMetaObject *meta = settings.metaObject();
        const QMetaProperty described = meta->property(meta->indexOfProperty(property));
        QSignalSpy changed(&settings, described.notifySignal());

        QVERIFY(described.write(&settings, value));
        QCOMPARE(described.read(&settings), value);
        QCOMPARE(changed.size(), 1);
        defaults.flush();
        QCOMPARE(QJsonValue(stored()[key]), onDisk);
        QCOMPARE(stored().size(), 1);

        QVERIFY(described.write(&settings, value));
        QCOMPARE(changed.size(), 1);

        UserDefaults again(file());
        QCOMPARE(AppSettings(again).property(property), value);
    }

    void constructionWritesNothing()
    {
        UserDefaults defaults(file());
        const AppSettings settings(defaults);
        QVERIFY(!QFile::exists(file()));
    }

    void choosingTheDefaultStoresIt()
    {
        UserDefaults defaults(file());
        AppSettings settings(defaults);
        QSignalSpy changed(&settings, &AppSettings::textCorrectionEnabledChanged);
        settings.setTextCorrectionEnabled(true);
        QCOMPARE(changed.size(), 0);
        defaults.flush();
        QCOMPARE(stored()[u"textCorrectionEnabled"_s], QJsonValue(true));
    }

    void wrongTypeIsReplaced()
    {
        store(R"({"detectSpeakers": 1})");
        UserDefaults defaults(file());
        AppSettings settings(defaults);
        settings.setDetectSpeakers(true);
        defaults.flush();
        QCOMPARE(QJsonValue(stored()[u"detectSpeakers"_s]), QJsonValue(true));
    }

    void language_data()
    {
        const Rows<QString, QString> row("code", "languageCode");
        for (const QString &known : {u"auto"_s, u"ru"_s, u"hi"_s})
            row(qUtf8Printable(known), known, known);
        row("unknown", u"xx"_s, u"auto"_s);
    }

    void language()
    {
        QFETCH(const QString, code);
        UserDefaults defaults(file());
        AppSettings settings(defaults);
        QVERIFY(!settings.storedLanguageCode());
        settings.setLanguageCode(code);
        QCOMPARE(settings.storedLanguageCode(), code);
        QCOMPARE(settings.languageCode(), code);
        QTEST(settings.language().code, "languageCode");
    }

    void interfaceLanguageSpeaksAtOnce()
    {
        UserDefaults defaults(file());
        AppSettings settings(defaults);
        settings.setLanguageCode(u"auto"_s);
        QCOMPARE(settings.dictationTriggerName(), u"правый Ctrl"_s);
        QCOMPARE(settings.language().displayName(), u"Автоопределение"_s);

        QStringList heard;
        connect(&settings, &AppSettings::interfaceLanguageChanged, &settings,
                [&] { heard << Localization::text(u"правый Alt"); });
        connect(&settings, &AppSettings::dictationTriggerNameChanged, &settings,
                [&] { heard << settings.dictationTriggerName(); });
        connect(&settings, &AppSettings::languageChanged, &settings,
                [&] { heard << settings.language().displayName(); });
        settings.setInterfaceLanguage(u"en"_s);
        QCOMPARE(heard, (QStringList{u"right Alt"_s, u"right Ctrl"_s, u"Auto-detect"_s}));

        settings.setDictationTrigger(TriggerKey::RightOption);
        QCOMPARE(heard.last(), u"right Alt"_s);

        // The next start speaks the stored language from its first text.
        defaults.flush();
        Localization::setLanguage(u"ru"_s);
        UserDefaults again(file());
        const AppSettings restarted(again);
        QCOMPARE(restarted.dictationTriggerName(), u"right Alt"_s);
    }

private:
    [[nodiscard]] QString file() const { return m_folder->filePath(u"settings.json"_s); }

    void store(const QByteArray &json) { put(file(), json); }

    [[nodiscard]] QJsonObject stored() const { return QJsonDocument::fromJson(contentOf(file())).object(); }

    std::unique_ptr<QTemporaryDir> m_folder;
};

QTEST_GUILESS_MAIN(TestAppSettings)
#include "tst_appsettings.moc"
