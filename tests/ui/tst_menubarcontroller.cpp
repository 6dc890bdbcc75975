#include "base/Async.h"
#include "desktop/KeyTap.h"
#include "tests/support/ServicesHome.h"
#include "ui/MenuBarController.h"

#include <QApplication>
#include <QFile>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace orvane;
using namespace orvane::test;

namespace {

class FakeKeys : public KeyTap
{
public:
    [[nodiscard]] bool grabIsMissing() const override { return isTaken; }
    [[nodiscard]] bool has(TriggerKey key) const override { return key == there; }

    [[nodiscard]] std::optional<Shortcuts> shortcuts() const override { return given; }
    [[nodiscard]] bool canBeSetUp() const override { return mayBeAsked; }

    bool isTaken = false;
    bool mayBeAsked = false;
    std::optional<Shortcuts> given;
    TriggerKey there = TriggerKey::RightCommand;
};

} // namespace

class TestMenuBarController : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_home = std::make_unique<ServicesHome>();
        m_services = std::make_unique<AppServices>(m_home->onDesktop());
        m_controller = std::make_unique<MenuBarController>(
            MenuBarController::Services{.settings = m_services->settings(),
                                        .models = m_services->models(),
                                        .dictation = *m_services->dictation(),
                                        .meeting = m_services->meeting(),
                                        .updates = *m_services->updates(),
                                        .keys = m_keys});
    }

    void cleanup()
    {
        m_controller.reset();
        m_services.reset();
        endAbandonedTasks(); // the history may still be being read
    }

    void speaksBothLanguages()
    {
        QCOMPARE(texts(opened()),
                 QStringList({u"Готов"_s, u"Открыть Orvane"_s, u"Настройки моделей…"_s, u"Настройки…"_s,
                              u"Начать диктовку"_s, u"Начать запись совещания"_s, u"Модель распознавания"_s,
                              u"Клавиша диктовки"_s, u"Язык распознавания"_s, u"Режим диктовки"_s,
                              u"Перехват клавиш: нет доступа"_s, u"Выдать «Универсальный доступ»…"_s,
                              u"Проверить обновления…"_s, u"Завершить Orvane"_s}));
        m_services->settings().setInterfaceLanguage(u"en"_s);
        QVERIFY(!texts(opened()).join(QString()).contains(QRegularExpression(u"[а-яё]"_s)));
        const QSignalSpy quit(m_controller.get(), &MenuBarController::quitRequested);
        entry(opened(), u"Quit Orvane"_s)->trigger();
        QCOMPARE(quit.size(), 1);
    }

    void choosesModel()
    {
        QMenu *models = entry(opened(), u"Модель распознавания"_s)->menu();
        QCOMPARE(texts(*models), QStringList{u"Нет скачанных моделей"_s});

        const QList<WhisperModel> &catalog = WhisperModel::catalog();
        for (const WhisperModel &model : {catalog[0], catalog[1]})
            ServicesHome::install(m_services->models(), model);
        models = entry(opened(), u"Модель распознавания"_s)->menu();
        QCOMPARE(texts(*models), (QStringList{catalog[0].displayName, catalog[1].displayName}));
        QCOMPARE(chosen(*models), catalog[0].displayName); // what is used when nothing was chosen

        entry(*models, catalog[1].displayName)->trigger();
        QCOMPARE(m_services->settings().selectedModelID(), catalog[1].id);
        QCOMPARE(chosen(*entry(opened(), u"Модель распознавания"_s)->menu()), catalog[1].displayName);
    }

    void choosesWhatTheSettingsHold()
    {
        AppSettings &settings = m_services->settings();
        entry(*entry(opened(), u"Клавиша диктовки"_s)->menu(), u"правый Alt"_s)->trigger();
        QCOMPARE(settings.dictationTrigger(), TriggerKey::RightOption);
        QCOMPARE(chosen(*entry(opened(), u"Клавиша диктовки"_s)->menu()), u"правый Alt"_s);

        QCOMPARE(chosen(*entry(opened(), u"Язык распознавания"_s)->menu()), u"Русский"_s);
        entry(*entry(opened(), u"Язык распознавания"_s)->menu(), u"Автоопределение"_s)->trigger();
        QCOMPARE(settings.languageCode(), u"auto"_s);

        entry(*entry(opened(), u"Режим диктовки"_s)->menu(), u"Письмо"_s)->trigger();
        QCOMPARE(settings.dictationMode(), DictationMode::Email);
        QCOMPARE(chosen(*entry(opened(), u"Режим диктовки"_s)->menu()), u"Письмо"_s);
    }

    void tellsOfMissingKeys()
    {
        const QSignalSpy help(m_controller.get(), &MenuBarController::keyCaptureHelpRequested);
        entry(opened(), u"Выдать «Универсальный доступ»…"_s)->trigger();
        QCOMPARE(help.size(), 1);

        const QSignalSpy setUp(m_controller.get(), &MenuBarController::keySetUpRequested);
        m_keys.mayBeAsked = true;
        entry(opened(), u"Назначить клавиши диктовки…"_s)->trigger();
        QCOMPARE(setUp.size(), 1);

        m_services->dictation()->setHotkeyActive(true);
        QVERIFY(entry(opened(), u"Перехват клавиш: активен"_s));
        QVERIFY(!entry(opened(), u"Выдать «Универсальный доступ»…"_s));
        m_keys.given = Shortcuts{.giver = Shortcuts::Giver::Sway,
                                 .twice = u"правый Ctrl"_s,
                                 .once = {},
                                 .taken = {u"Ctrl+Alt+Space"_s}};
        QVERIFY(entry(opened(), u"Перехват клавиш: правый Ctrl дважды (sway)"_s));
        QVERIFY(entry(opened(), u"Перехват клавиш: уже занято Ctrl+Alt+Space"_s));
        m_keys.given.reset();
        m_keys.isTaken = true;
        QVERIFY(entry(opened(), u"Перехват клавиш: F5 или Esc заняты другой программой"_s));
        m_keys.there = TriggerKey::RightOption;
        QVERIFY(
            entry(opened(), u"Перехват клавиш: в раскладке нет клавиши «правый Ctrl» — выберите другую"_s));
    }

    void startsDictation()
    {
        entry(opened(), u"Начать диктовку"_s)->trigger();
        QCOMPARE(m_home->guidance.titles, QStringList{u"Нет модели"_s});
        // The problem stays readable, but no wider than a menu may be.
        const QString status = texts(opened()).constFirst();
        QVERIFY(status.startsWith(u"Нет модели: "_s));
        QVERIFY(status.size() <= 80);
    }

    void offersLeftovers()
    {
        const QString audio = m_home->path(u"Orvane/Recordings/Совещание.wav"_s);
        put(audio, QByteArray(44 + 32'000, '\0'));
        put(audio + u".unfinished.json"_s,
            R"({"languageCode": "ru", "modelID": "base", "startedAt": "2025-03-03T14:05:09Z"})");
        spawn(m_services->meeting().findLeftovers());
        QTRY_COMPARE(m_services->meeting().leftovers().size(), 1);

        m_services->dictation()->start(); // fails; what becomes of a meeting after it stands first
        QTRY_VERIFY(!m_services->dictation()->lastError().isEmpty());
        const QString title = u"Нерасшифрованные записи"_s;
        QMenu *recordings = entry(opened(), title)->menu();
        QCOMPARE(recordings->actions().size(), 1);
        QMenu *actions = recordings->actions().constFirst()->menu();
        entry(*actions, u"Расшифровать"_s)->trigger(); // there is no model
        QTRY_VERIFY(!m_services->meeting().errorText().isEmpty());
        QTRY_VERIFY(texts(opened()).constFirst().startsWith(m_services->meeting().errorText().left(40)));

        actions = entry(opened(), title)->menu()->actions().constFirst()->menu();
        entry(*actions, u"Больше не предлагать"_s)->trigger();
        QVERIFY(!entry(opened(), title));
        QVERIFY(QFile::exists(audio));
    }

    void doesNotGrow()
    {
        const auto submenus = [this] { return opened().findChildren<QMenu *>().size(); };
        const qsizetype atFirst = submenus();
        for (int i = 0; i < 3; ++i) {
            (void)opened();
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        }
        QCOMPARE(submenus(), atFirst);
    }

private:
    [[nodiscard]] QMenu &opened()
    {
        Q_EMIT m_controller->menu().aboutToShow();
        return m_controller->menu();
    }

    [[nodiscard]] QAction *entry(QMenu &menu, const QString &text)
    {
        for (QAction *action : menu.actions())
            if (action->text() == text)
                return action;
        return nullptr;
    }

    [[nodiscard]] static QStringList texts(const QMenu &menu)
    {
        QStringList all;
        for (const QAction *action : menu.actions())
            if (!action->isSeparator())
                all.append(action->text());
        return all;
    }

    [[nodiscard]] static QString chosen(const QMenu &menu)
    {
        QStringList all;
        for (const QAction *action : menu.actions())
            if (action->isChecked())
                all.append(action->text());
        return all.join(u'|');
    }

    std::unique_ptr<ServicesHome> m_home;
    FakeKeys m_keys;
    std::unique_ptr<AppServices> m_services;
    std::unique_ptr<MenuBarController> m_controller;
};

QTEST_MAIN(TestMenuBarController)
#include "tst_menubarcontroller.moc"
