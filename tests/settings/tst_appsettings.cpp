#include "base/localization/Localization.h"
#include "settings/AppSettings.h"
#include "settings/UserDefaults.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMetaProperty>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace orvane;

class TestAppSettings : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup() { Localization::setLanguage(u"ru"_s); }

    void freshInstallation();
    void wrongTypeGivesDefault_data();
    void wrongTypeGivesDefault();
    void storedWords_data();
    void storedWords();
    void everyPropertyIsStoredAndReported_data();
    void everyPropertyIsStoredAndReported();
    void constructionWritesNothing();
    void choosingTheDefaultStoresIt();
    void wrongTypeIsReplaced();
    void language_data();
    void language();
    void interfaceLanguageSpeaksAtOnce();

private:
    [[nodiscard]] QString file() const { return m_folder->filePath(u"settings.json"_s); }
    void store(const QByteArray &json);
    [[nodiscard]] QJsonObject stored() const;

    std::unique_ptr<QTemporaryDir> m_folder;
};

void TestAppSettings::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
}

void TestAppSettings::store(const QByteArray &json)
{
    QFile created(file());
    QVERIFY(created.open(QFile::WriteOnly));
    created.write(json);
}

QJsonObject TestAppSettings::stored() const
{
    QFile read(file());
    return read.open(QFile::ReadOnly) ? QJsonDocument::fromJson(read.readAll()).object() : QJsonObject();
}

void TestAppSettings::freshInstallation()
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
    QCOMPARE(settings.correctionPrompt(), AppSettings::defaultCorrectionPrompt());
    QCOMPARE(settings.correctionPrompt().count(u'\n'), 4);
    QCOMPARE(settings.interfaceLanguage(), u"ru"_s);
}

void TestAppSettings::wrongTypeGivesDefault_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::newRow("texts for booleans") << QByteArray(R"({"textCorrectionEnabled": "false"})");
    QTest::newRow("objects and lists")
        << QByteArray(R"({"textCorrectionEnabled": [false], "dictationLanguage": {"a": 1}})");
    QTest::newRow("numbers for texts") << QByteArray(R"({"dictationLanguage": 7, "correctionEngine": 1})");
    QTest::newRow("dates for texts") << QByteArray(
        R"({"dictationLanguage": {"$date": "2024-01-01T00:00:00Z"}})");
}

void TestAppSettings::wrongTypeGivesDefault()
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

void TestAppSettings::storedWords_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<CorrectionEngine>("engine");
    QTest::addColumn<DictationMode>("mode");
    using Engine = CorrectionEngine;
    using Mode = DictationMode;
    QTest::newRow("local, email") << QByteArray(R"({"correctionEngine": "local", "dictationMode": "email"})")
                                  << Engine::Local << Mode::Email;
    QTest::newRow("apple, prompt") << QByteArray(
                                          R"({"correctionEngine": "apple", "dictationMode": "prompt"})")
                                   << Engine::BuiltIn << Mode::Prompt;
    QTest::newRow("other case") << QByteArray(R"({"correctionEngine": "Local", "dictationMode": "Email"})")
                                << Engine::BuiltIn << Mode::Correct;
    QTest::newRow("unknown") << QByteArray(R"({"correctionEngine": "cloud", "dictationMode": "summary"})")
                             << Engine::BuiltIn << Mode::Correct;
}

void TestAppSettings::storedWords()
{
    QFETCH(const QByteArray, json);
    store(json);
    UserDefaults defaults(file());
    const AppSettings settings(defaults);
    QTEST(settings.correctionEngine(), "engine");
    QTEST(settings.dictationMode(), "mode");
}

void TestAppSettings::everyPropertyIsStoredAndReported_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QJsonValue>("onDisk");

    const auto text = [](const char *property, const QString &key, const QString &value) {
        QTest::newRow(property) << key << QVariant(value) << QJsonValue(value);
    };
    const auto flag = [](const char *property, bool value) {
        QTest::newRow(property) << QString::fromLatin1(property) << QVariant(value) << QJsonValue(value);
    };
    text("selectedModelID", u"selectedModelID"_s, u"large-v3"_s);
    text("languageCode", u"dictationLanguage"_s, u"kk"_s);
    flag("detectSpeakers", true);
    flag("textCorrectionEnabled", false);
    QTest::newRow("correctionEngine")
        << u"correctionEngine"_s << QVariant::fromValue(CorrectionEngine::Local) << QJsonValue(u"local"_s);
    text("correctionModelID", u"correctionModelID"_s, u"some-model"_s);
    QTest::newRow("dictationTrigger")
        << u"dictationTrigger"_s << QVariant::fromValue(TriggerKey::RightOption) << QJsonValue(u"ropt"_s);
    flag("correctDictation", true);
    QTest::newRow("dictationMode") << u"dictationMode"_s << QVariant::fromValue(DictationMode::Prompt)
                                   << QJsonValue(u"prompt"_s);
    flag("shareAnonymousStats", true);
    text("correctionPrompt", u"correctionPrompt"_s, u"Строка\n«вторая»\t\"\\ 🎙"_s);
    text("interfaceLanguage", u"interfaceLanguage"_s, u"en"_s);
    QTest::newRow("terminalClasses") << u"terminalClasses"_s << QVariant(QStringList{u"warp"_s})
                                     << QJsonValue(QJsonArray{u"warp"_s});
}

void TestAppSettings::everyPropertyIsStoredAndReported()
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

void TestAppSettings::constructionWritesNothing()
{
    UserDefaults defaults(file());
    const AppSettings settings(defaults);
    QVERIFY(!QFile::exists(file()));
}

void TestAppSettings::wrongTypeIsReplaced()
{
    store(R"({"detectSpeakers": 1})");
    UserDefaults defaults(file());
    AppSettings settings(defaults);
    settings.setDetectSpeakers(true);
    defaults.flush();
    QCOMPARE(QJsonValue(stored()[u"detectSpeakers"_s]), QJsonValue(true));
}

void TestAppSettings::choosingTheDefaultStoresIt()
{
    UserDefaults defaults(file());
    AppSettings settings(defaults);
    QSignalSpy changed(&settings, &AppSettings::textCorrectionEnabledChanged);
    settings.setTextCorrectionEnabled(true);
    QCOMPARE(changed.size(), 0);
    defaults.flush();
    QCOMPARE(stored()[u"textCorrectionEnabled"_s], QJsonValue(true));
}

void TestAppSettings::language_data()
{
    QTest::addColumn<QString>("code");
    QTest::addColumn<QString>("languageCode");
    for (const QString &known : {u"auto"_s, u"ru"_s, u"hi"_s})
        QTest::newRow(qUtf8Printable(known)) << known << known;
    QTest::newRow("unknown") << u"xx"_s << u"auto"_s;
}

void TestAppSettings::language()
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

void TestAppSettings::interfaceLanguageSpeaksAtOnce()
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

QTEST_GUILESS_MAIN(TestAppSettings)
#include "tst_appsettings.moc"
