#include "tests/e2e/WindowedTest.h"
#include "tests/support/Files.h"
#include "tests/support/Nginx.h"
#include "tests/support/WordError.h"
#include "tests/support/XDisplay.h"

#include <QGuiApplication>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace orvane;
using namespace orvane::test;

/// Models come and go by the settings window, from a real server.
class WindowModelsTest : public WindowedTest
{
    Q_OBJECT

private Q_SLOTS:
    void downloadsUsesAndDeletes()
    {
        if (!Nginx::isInstalled())
            QSKIP("nginx is not installed");
        const Nginx server;
        const QString name = u"/ggml-tiny.en.bin"_s;
        server.put(u"/vantrel/whisper.cpp/resolve/main"_s + name,
                   contentOf(qEnvironmentVariable("ORVANE_TEST_MODELS") + name));
        m_program.install(u"base"_s);
        m_program.setPreferences(R"({"selectedModelID": "base", "dictationLanguage": "en"})");
        launch();
        QVERIFY(m_windows.press(Role::Button, u"Настройки…"_s));
        QVERIFY(m_windows.press(Role::PageTab, u"Модели распознавания"_s));
        QVERIFY(m_windows.type(u"Адрес хранилища моделей"_s, server.url().toString()));
        QVERIFY(m_windows.press(Role::Button, u"Проверить и сохранить"_s));
        QTRY_COMPARE_WITH_TIMEOUT(settingOf(u"modelRepository"_s), server.url().toString(), patience);

        const QString model = u"Tiny (English)"_s;
        QVERIFY(m_windows.pressIn(model, Role::Button, u"Скачать"_s));
        QVERIFY(m_windows.pressIn(model, Role::Button, u"Использовать"_s));
        QTRY_COMPARE_WITH_TIMEOUT(settingOf(u"selectedModelID"_s), u"tiny.en"_s, patience);
        QCOMPARE(m_program.run({u"open"_s, fixture(u"jfk.wav"_s)}).exitCode, 0);
        QTRY_VERIFY_WITH_TIMEOUT(!transcript().isEmpty(), patience);
        VERIFY_WORDS(transcript(), said());
        QCOMPARE(record()[u"modelID"_s].toString(), u"tiny.en"_s);

        const QString file = m_program.dataFolder() + u"/Models"_s + name;
        QVERIFY(QFile::exists(file));
        QVERIFY(m_windows.press(Role::Button, u"Настройки…"_s));
        QTRY_VERIFY_WITH_TIMEOUT(m_windows.is(Role::Frame, u"Настройки"_s, &Element::isActive), patience);
        QVERIFY(m_windows.pressIn(model, Role::Button, u"Удалить"_s));
        QTRY_VERIFY_WITH_TIMEOUT(m_windows.find(Role::Label, u"Удалить модель «Tiny (English)»?"_s),
                                 patience);
        pressKeys({u"Return"_s});
        QTRY_VERIFY_WITH_TIMEOUT(!QFile::exists(file), patience);
        QVERIFY(m_windows.pressIn(model, Role::Button, u"Скачать"_s));
    }
};

ORVANE_DISPLAY_TEST_MAIN(WindowModelsTest, QGuiApplication)
#include "tst_windows_models.moc"
