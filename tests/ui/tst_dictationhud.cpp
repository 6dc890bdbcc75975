#include "settings/AppSettings.h"
#include "settings/UserDefaults.h"
#include "tests/support/Rows.h"
#include "ui/DictationHUDModel.h"
#include "ui/HUDPlacement.h"

#include <QFile>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;
using namespace orvane;
using namespace orvane::test;
using State = DictationState;
using Mode = DictationMode;

class TestDictationHUD : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void states_data()
    {
        const Rows<State, std::optional<Mode>, QString, QString, QString> row("state", "processing", "icon",
                                                                              "title", "subtitle");
        const QString moment = u"Подождите немного"_s;
        row("starting", State::Starting, {}, u"mic"_s, u"Orvane"_s, u"Готов"_s);
        row("recording", State::Recording, {}, u"mic"_s, u"Слушаю…"_s,
            u"Дважды Ctrl — готово · Esc — отмена"_s);
        row("transcribing", State::Transcribing, {}, u"waveform"_s, u"Распознаю…"_s, moment);
        row("correcting", State::Correcting, Mode::Correct, u"text-check"_s, u"Исправляю…"_s,
            u"Пунктуация и грамматика"_s);
        row("e-mail", State::Correcting, Mode::Email, u"envelope"_s, u"Составляю письмо…"_s,
            u"Оформляю как письмо"_s);
        row("prompt", State::Correcting, Mode::Prompt, u"wand"_s, u"Выполняю запрос…"_s,
            u"Выполняю как запрос"_s);
        row("no mode", State::Correcting, {}, u"sparkles"_s, u"Обрабатываю…"_s, moment);
    }

    void states()
    {
        QFETCH(const State, state);
        QFETCH(const std::optional<Mode>, processing);
        QFETCH(const QString, icon);
        DictationHUDModel hud(m_settings);
        hud.setKeys({.twice = u"Ctrl"_s});
        hud.setState(state, processing);
        m_settings.setInterfaceLanguage(u"ru"_s);
        QCOMPARE(hud.iconName(), icon);
        QTEST(hud.title(), "title");
        QTEST(hud.subtitle(), "subtitle");
        m_settings.setInterfaceLanguage(u"en"_s);
        static const QRegularExpression russian(u"[а-яё]"_s);
        QVERIFY(!hud.title().contains(russian) && !hud.subtitle().contains(russian));
        QVERIFY(QFile::exists(QStringLiteral(ORVANE_ICONS) + u'/' + icon + u".svg"_s));
        QCOMPARE(hud.isListening(), state == State::Recording);
        QCOMPARE(hud.isWorking(), state == State::Transcribing || state == State::Correcting);
    }

    void hintFollows()
    {
        m_settings.setInterfaceLanguage(u"ru"_s);
        DictationHUDModel hud(m_settings);
        hud.setState(State::Recording);
        const QSignalSpy content(&hud, &DictationHUDModel::contentChanged);
        const QSignalSpy chips(&hud, &DictationHUDModel::chipsChanged);
        hud.setKeys({.twice = u"правый Alt"_s});
        QCOMPARE(hud.subtitle(), u"Дважды правый Alt — готово · Esc — отмена"_s);
        QVERIFY(!hud.needsCancel());
        hud.setKeys({.twice = u"правый Alt"_s, .escape = false});
        QCOMPARE(hud.subtitle(), u"Дважды правый Alt — готово · ✕ — отмена"_s);
        QVERIFY(hud.needsCancel());
        hud.setKeys({.once = u"Ctrl+Alt+Space"_s, .escape = false});
        QCOMPARE(hud.subtitle(), u"Ctrl+Alt+Space — готово · ✕ — отмена"_s);
        hud.setKeys({.escape = false});
        QCOMPARE(hud.subtitle(), u"orvane toggle или меню — готово · ✕ — отмена"_s);
        QCOMPARE_GE(content.size(), 3);
        m_settings.setInterfaceLanguage(u"en"_s);
        QVERIFY(!chips.isEmpty());
    }

    void silentMicrophone()
    {
        m_settings.setInterfaceLanguage(u"ru"_s);
        DictationHUDModel hud(m_settings);
        hud.setState(State::Recording);
        const QString usual = hud.subtitle();
        hud.setDeviceIsSilent(true);
        QCOMPARE(hud.subtitle(), u"Нет звука с микрофона — проверьте его"_s);
        QVERIFY(hud.subtitleIsWarning());
        hud.setState(State::Transcribing);
        QCOMPARE(hud.subtitle(), u"Подождите немного"_s);
        QVERIFY(!hud.subtitleIsWarning());
        hud.setState(State::Recording);
        hud.setDeviceIsSilent(false);
        QCOMPARE(hud.subtitle(), usual);
    }

    void chips()
    {
        m_settings.setInterfaceLanguage(u"ru"_s);
        DictationHUDModel hud(m_settings);
        QCOMPARE(hud.chipTitles(), QStringList({u"Исправить"_s, u"Письмо"_s, u"Промпт"_s}));
        for (int i = 0; i < 3; ++i)
            QVERIFY(hud.chipHelps().at(i).startsWith(hud.chipTitles().at(i) + u": "_s));
        const QSignalSpy selected(&hud, &DictationHUDModel::selectedChipChanged);
        hud.selectChip(2);
        QCOMPARE(m_settings.dictationMode(), Mode::Prompt);
        m_settings.setDictationMode(Mode::Email);
        QCOMPARE(hud.selectedChip(), 1);
        QCOMPARE(selected.size(), 2);
    }

    void liveText()
    {
        DictationHUDModel hud(m_settings);
        hud.setLiveText({});
        QVERIFY(!hud.hasLiveText());
        const QSignalSpy changed(&hud, &DictationHUDModel::liveTextChanged);
        hud.setLiveText({.settled = u"Привет,"_s, .unsettled = u"мир"_s});
        QVERIFY(hud.hasLiveText() && !hud.liveTextIsCut());
        const QVariantMap line{{u"settled"_s, u"Привет,"_s}, {u"unsettled"_s, u"мир"_s}};
        QCOMPARE(hud.liveLines(), QVariantList{line});
        hud.setLiveText({}); // nothing shrinks while it is shown
        QVERIFY(hud.hasLiveText() && hud.liveLines().isEmpty());

        m_settings.setShowsLiveText(false);
        QVERIFY(!hud.hasLiveText());
        m_settings.setShowsLiveText(true);
        QVERIFY(hud.hasLiveText());
        hud.clearLiveText();
        QVERIFY(!hud.hasLiveText());
        QCOMPARE(changed.size(), 5);
    }

    void placement_data()
    {
        const Rows<QPoint, QPoint> row("pointer", "position");
        row("first screen, over its panel", QPoint(100, 1060), QPoint(800, 834));
        row("right screen", QPoint(1920, 500), QPoint(2405, 818));
        row("between the screens", QPoint(2000, -1), QPoint(800, 834));
    }

    void placement()
    {
        QFETCH(const QPoint, pointer);
        QFETCH(const QPoint, position);
        // The first with a dock of 60 at the left and a panel of 40 at the bottom, the second lower and
        // smaller.
        const QList<HUDPlacement::Screen> screens = {
            {.frame = {0, 0, 1920, 1080}, .available = {60, 0, 1860, 1040}},
            {.frame = {1920, 0, 1350, 1024}, .available = {1920, 0, 1350, 1024}}};
        QCOMPARE(HUDPlacement::position({380, 126}, pointer, screens), position);
    }

private:
    QTemporaryDir m_folder;
    UserDefaults m_defaults{m_folder.filePath(u"settings.json"_s)};
    AppSettings m_settings{m_defaults};
};

QTEST_MAIN(TestDictationHUD)
#include "tst_dictationhud.moc"
