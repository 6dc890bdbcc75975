#include "app/services/AppServices.h"
#include "desktop/KeyTap.h"
#include "diagnostics/SystemCheck.h"
#include "tests/support/FakeFileChooser.h"
#include "tests/support/Files.h"
#include "ui/presentation/Check.h"
#include "ui/presentation/FirstStart.h"
#include "ui/presentation/KeyText.h"
#include "ui/presentation/Prompt.h"
#include "ui/presentation/SpeechCatalogue.h"

#include <QDir>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace orvane;
using orvane::test::put;

namespace {

struct Keys : KeyTap
{
    bool active = true;
    bool hasTrigger = true;
    bool grabMissing = false;
    std::optional<Shortcuts> given;

    [[nodiscard]] bool isActive() const override { return active; }
    [[nodiscard]] bool has(TriggerKey) const override { return hasTrigger; }
    [[nodiscard]] bool grabIsMissing() const override { return grabMissing; }
    [[nodiscard]] bool escapeIsMissing() const override { return given.has_value(); }
    [[nodiscard]] std::optional<Shortcuts> shortcuts() const override { return given; }
};

} // namespace

class TestSettingsPages : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_home = std::make_unique<QTemporaryDir>(); }

    void saysHowToDictate_data()
    {
        QTest::addColumn<bool>("active");
        QTest::addColumn<bool>("hasTrigger");
        QTest::addColumn<bool>("grabMissing");
        QTest::addColumn<QString>("part");
        QTest::newRow("works") << true << true << false << u"Нажмите правый Ctrl дважды"_s;
        QTest::newRow("no F5") << true << true << true << u"F5 или Esc заняты другой программой."_s;
        QTest::newRow("no such key") << true << false << false << u"нет клавиши «правый Ctrl»"_s;
        QTest::newRow("Wayland") << false << false << false << u"«orvane toggle»"_s;
    }

    void saysHowToDictate()
    {
        QFETCH(const bool, active);
        QFETCH(const bool, hasTrigger);
        QFETCH(const bool, grabMissing);
        QFETCH(const QString, part);
        Keys keys;
        keys.active = active;
        keys.hasTrigger = hasTrigger;
        keys.grabMissing = grabMissing;
        AppServices services(environment());
        QVERIFY2(keyText(services.settings(), keys).contains(part),
                 qPrintable(keyText(services.settings(), keys)));
    }

    void saysWhichKeysTheDesktopGives_data()
    {
        QTest::addColumn<Shortcuts>("given");
        QTest::addColumn<QString>("text");
        QTest::newRow("both")
            << Shortcuts{.giver = Shortcuts::Giver::Sway,
                         .twice = u"правый Ctrl"_s,
                         .once = u"Ctrl+Alt+Space"_s}
            << u"Нажмите правый Ctrl дважды, чтобы начать, и ещё раз дважды, чтобы вставить "
               "текст. То же делает Ctrl+Alt+Space. Отменяет ✕ на индикаторе. Другие клавиши "
               "назначьте в настройках sway командам orvane tap и orvane toggle."_s;
        QTest::newRow("one is taken")
            << Shortcuts{.giver = Shortcuts::Giver::Plasma,
                         .once = u"Meta+D"_s,
                         .taken = {u"левый или правый Ctrl"_s}}
            << u"Нажмите Meta+D, чтобы начать, и ещё раз, чтобы вставить текст. Отменяет ✕ на индикаторе. "
               u"Уже "
               "занято на рабочем столе: левый или правый Ctrl. Сменить их можно в «Параметры системы → "
               "Комбинации клавиш → Orvane»."_s;
    }

    void saysWhichKeysTheDesktopGives()
    {
        QFETCH(const Shortcuts, given);
        Keys keys;
        keys.given = given;
        AppServices services(environment());
        services.settings().setInterfaceLanguage(u"ru"_s);
        QTEST(keyText(services.settings(), keys), "text");
    }

    void keepsThePrompt()
    {
        AppServices services(environment());
        Prompt prompt(services.settings());
        QVERIFY(prompt.isDefault());
        prompt.store(prompt.text());
        services.settings().setCorrectionPrompt(u"Пиши прописными."_s);
        QVERIFY(!prompt.isDefault());
        prompt.store(u" \n"_s); // the model is told the default one then
        QVERIFY(prompt.isDefault());
        QVERIFY(services.corrector().correctionSystemPrompt().startsWith(prompt.text()));
        QVERIFY(services.corrector().correctionSystemPrompt().endsWith(prompt.safeguard()));
        prompt.store(u"Пиши прописными."_s);
        prompt.reset();
        QVERIFY(prompt.isDefault());
    }

    void isShownOnce()
    {
        orvane::test::FakeFileChooser files;
        const Keys keys;
        const auto check = [&](AppServices &services, bool isDue) {
            SpeechCatalogue catalogue(
                {services.settings(), services.models(), services.whisperEngine(), files});
            FirstStart first({services.settings(), services.models(), catalogue, keys, m_home->path()});
            QCOMPARE(first.isDue(), isDue);
            QVERIFY(first.suggestedModels()->rowCount() >= 2);
            if (isDue)
                first.begin();
            first.end();
            return first.finish();
        };
        {
            AppServices services(environment());
            QVERIFY(!services.settings().storedLanguageCode());
            check(services, true);
            QCOMPARE(services.settings().language().code, u"auto"_s);
            services.settings().setLanguageCode(u"kk"_s);
        }
        {
            AppServices services(environment());
            check(services, false);
        }
        QVERIFY(QFile::remove(environment().defaultsFile));
        QVERIFY(QDir().mkpath(environment().folders.models()));
        put(environment().folders.models() + u"/ggml-base.bin"_s, "lmgg");
        AppServices services(environment());
        check(services, false); // there is nothing to begin with
        QVERIFY(!services.settings().storedLanguageCode());
    }

    void checksAnewInAnotherLanguage()
    {
        AppServices services(environment());
        SystemCheck system({.settings = services.settings(),
                            .models = services.models(),
                            .correctionModels = services.correctionModels(),
                            .engine = services.whisperEngine(),
                            .corrector = services.corrector(),
                            .turns = services.turns(),
                            .folders = services.folders(),
                            .keys = nullptr,
                            .listeningTime = 1ms});
        Check check(system);
        connect(&services.settings(), &AppSettings::interfaceLanguageChanged, &check, &Check::relabel);
        const auto isFinished = [&check] { return !check.isRunning() && !allTexts(check).isEmpty(); };
        check.run();
        services.settings().setInterfaceLanguage(u"en"_s); // while it runs
        QTRY_VERIFY(isFinished());
        static const QRegularExpression russian(u"[а-яё]"_s, QRegularExpression::CaseInsensitiveOption);
        QVERIFY2(!allTexts(check).contains(russian), qPrintable(allTexts(check)));

        services.settings().setInterfaceLanguage(u"ru"_s);
        QCOMPARE(allTexts(check), QString());
        QCOMPARE(check.summary(), QString());
        check.run();
        QTRY_VERIFY(isFinished());
        QVERIFY(allTexts(check).contains(russian));
    }

private:
    [[nodiscard]] static QString allTexts(const Check &check)
    {
        QStringList texts;
        for (const QVariantMap &row : check.rows())
            texts.append(row.value(u"text"_s).toString());
        texts.removeAll(QString());
        return texts.join(u'\n');
    }

    [[nodiscard]] AppServices::Environment environment() const
    {
        AppServices::Environment environment;
        environment.folders = {
            .applicationSupport = m_home->path(), .resources = m_home->path(), .temporary = m_home->path()};
        environment.defaultsFile = m_home->filePath(u"settings.json"_s);
        return environment;
    }

    std::unique_ptr<QTemporaryDir> m_home;
};

QTEST_GUILESS_MAIN(TestSettingsPages)
#include "tst_settingspages.moc"
