#include "tests/e2e/WindowedTest.h"
#include "tests/support/Files.h"
#include "tests/support/WordError.h"
#include "tests/support/XDisplay.h"
#include "ui/presentation/SceneTable.h"

#include <QDir>
#include <QGuiApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QTest>

#include <algorithm>
#include <span>

using namespace Qt::StringLiterals;
using namespace orvane;
using namespace orvane::test;

namespace {

const QString hello = u"hello my name is ivan"_s;

QByteArray talk()
{
    const QJsonObject segment{{u"start"_s, 0}, {u"end"_s, 1000}, {u"text"_s, hello}};
    return QJsonDocument(QJsonObject{{u"id"_s, u"0A1B2C3D-4E5F-4607-8899-AABBCCDDEEFF"_s},
                                     {u"kind"_s, u"file"_s},
                                     {u"title"_s, u"Talk"_s},
                                     {u"createdAt"_s, u"2025-03-03T14:05:09Z"_s},
                                     {u"modelID"_s, u"tiny.en"_s},
                                     {u"languageCode"_s, u"en"_s},
                                     {u"durationMs"_s, 1000},
                                     {u"sourceFilePath"_s, fixture(u"jfk.wav"_s)},
                                     {u"segments"_s, QJsonArray{segment}},
                                     {u"text"_s, hello}})
        .toJson();
}

/// From the program's tables of texts.
QString translated(const QString &russian)
{
    using Table = std::span<const Localization::TextPair>;
    for (const Table table : {Table(sceneTable), Table(Localization::table)}) {
        const auto found =
            std::ranges::find(table, russian.toStdU16String(), &Localization::TextPair::russian);
        if (found != table.end())
            return QString::fromStdU16String(std::u16string(found->english));
    }
    qFatal("no translation of '%s'", qPrintable(russian));
}

} // namespace

/// The windows of the real program, read and worked as a screen reader does it, with the real engines.
class WindowsTest : public WindowedTest
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void worksOnAFile();
    void everyControlHasAName_data();
    void everyControlHasAName();
    void losesNothingWhenKilled_data();
    void losesNothingWhenKilled();

private:
    [[nodiscard]] QStringList cyrillicTexts() const;
    void checkNames();
    void checkFocusChain();
    /// What the keyboard is at; empty when that is nothing that can be told.
    [[nodiscard]] QString focusedStop() const;
};

void WindowsTest::init()
{
    m_program.install(u"tiny.en"_s);
    QDir(m_program.dataFolder() + u"/History"_s).removeRecursively();
    QDir().mkpath(m_program.dataFolder() + u"/History"_s);
    setPreferences();
}

void WindowsTest::worksOnAFile()
{
    launch({u"open"_s, fixture(u"jfk.wav"_s)});
    // The result opens by itself, and again from its place in the queue.
    QTRY_VERIFY_WITH_TIMEOUT(m_windows.find(Role::PageTab, u"Расшифровка"_s), patience);
    QVERIFY(m_windows.press(Role::PageTab, u"Файл"_s));
    QVERIFY(m_windows.press(Role::Button, u"Открыть"_s));
    QTRY_VERIFY_WITH_TIMEOUT(!transcript().isEmpty(), patience);
    VERIFY_WORDS(transcript(), said());

    QVERIFY(m_windows.press(Role::Button, u"Исправить"_s));
    QTRY_VERIFY_WITH_TIMEOUT(m_windows.find(Role::List, u"Исправлено"_s), patience);
    QVERIFY(m_windows.press(Role::PageTab, u"Протокол"_s));
    QVERIFY(m_windows.press(Role::Button, u"Составить протокол"_s));
    QTRY_VERIFY_WITH_TIMEOUT(!m_windows.text(Role::Text, u"Протокол"_s).isEmpty(), patience);
    QVERIFY(m_windows.press(Role::PageTab, u"Вопросы"_s));
    const QString question = u"Who speaks?"_s;
    QVERIFY(m_windows.type(u"Вопрос по тексту"_s, question));
    pressKeys({u"Return"_s});
    QTRY_VERIFY_WITH_TIMEOUT(!m_windows.text(Role::Text, question).isEmpty(), patience);
    QVERIFY(m_windows.press(Role::PageTab, u"Журнал"_s));
    QTRY_COMPARE_WITH_TIMEOUT(record()[u"events"_s].toArray().size(), 4, patience);

    QVERIFY(m_windows.focus(Role::List, u"История"_s));
    pressKeys({u"Down"_s, u"F2"_s});
    QVERIFY(m_windows.type(u"Переименовать запись"_s, u"Inaugural address"_s));
    pressKeys({u"Return"_s});
    QTRY_COMPARE_WITH_TIMEOUT(record()[u"title"_s].toString(), u"Inaugural address"_s, patience);

    QVERIFY(m_windows.type(u"Поиск в истории"_s, u"nobody says this"_s));
    QTRY_VERIFY_WITH_TIMEOUT(m_windows.find(Role::Label, u"Ничего не найдено."_s), patience);
    QVERIFY(m_windows.type(u"Поиск в истории"_s, u"fellow"_s));
    QVERIFY(m_windows.press(Role::ListItem, u"Inaugural address"_s));
    QTRY_VERIFY_WITH_TIMEOUT(m_windows.find(Role::Text, u"Найти в тексте"_s), patience);
    QCOMPARE(m_windows.text(Role::Text, u"Найти в тексте"_s), u"fellow"_s);
    QTRY_VERIFY_WITH_TIMEOUT(m_windows.find(Role::Label, u"1 из 1"_s), patience);

    QVERIFY(m_windows.press(Role::Button, u"Ещё"_s));
    QVERIFY(m_windows.press(Role::MenuItem, u"Удалить расшифровку"_s));
    QVERIFY(m_windows.press(Role::Button, u"Удалить"_s));
    QVERIFY(m_windows.press(Role::Button, u"Вернуть"_s));
    QVERIFY(m_windows.press(Role::ListItem, u"Inaugural address"_s));
    VERIFY_WORDS(record()[u"text"_s].toString(), said());

    QVERIFY(!cyrillicTexts().isEmpty());
    QVERIFY(m_windows.press(Role::Button, u"Настройки…"_s));
    QVERIFY(m_windows.focus(Role::ComboBox, u"Язык интерфейса · Interface language"_s));
    pressKeys({u"Down"_s});
    for (const QString &page : {u"File"_s, u"Meeting"_s}) {
        QTRY_COMPARE_WITH_TIMEOUT(cyrillicTexts(), QStringList(), patience);
        QVERIFY(m_windows.press(Role::PageTab, page));
    }
    QTRY_COMPARE_WITH_TIMEOUT(cyrillicTexts(), QStringList(), patience);
}

/// Those that are no name of a language in itself, nor what a language model is told.
QStringList WindowsTest::cyrillicTexts() const
{
    static const QRegularExpression cyrillic(u"\\p{Cyrillic}"_s);
    static const QStringList itself = {u"Русский"_s, u"Язык · Language"_s,
                                       u"Язык интерфейса · Interface language"_s};
    QStringList texts;
    for (const Element &element : m_windows.shown()) {
        for (const QString &text : {element.name, m_windows.description(element)}) {
            if (text.contains(cyrillic) && !itself.contains(text) && !text.contains(u"⟦ТЕКСТ⟧"_s))
                texts.append(text);
        }
    }
    return texts;
}

void WindowsTest::everyControlHasAName_data()
{
    QTest::addColumn<bool>("isEnglish");
    QTest::newRow("Russian") << false;
    QTest::newRow("English") << true;
}

void WindowsTest::everyControlHasAName()
{
    QFETCH(const bool, isEnglish);
    const auto in = [isEnglish](const QString &russian) { return isEnglish ? translated(russian) : russian; };
    const auto check = [this, isEnglish](const QString &page) {
        checkNames();
        if (isEnglish)
            QTRY_COMPARE_WITH_TIMEOUT(cyrillicTexts(), QStringList(), patience);
        else
            checkFocusChain();
        if (QTest::currentTestFailed())
            qWarning("on the page '%s'", qPrintable(page));
    };
    const auto go = [this, &in, &check](const QString &page) {
        QVERIFY(m_windows.press(Role::PageTab, in(page)));
        QTRY_VERIFY_WITH_TIMEOUT(m_windows.is(Role::PageTab, in(page), &Element::isChecked), patience);
        check(page);
    };
    setPreferences(isEnglish ? "en" : "ru");
    m_program.addRecord(u"0A1B2C3D-4E5F-4607-8899-AABBCCDDEEFF"_s, talk());

    const QString model = m_program.dataFolder() + u"/Models/ggml-tiny.en.bin"_s;
    QVERIFY(QFile::remove(model));
    launch();
    QTRY_VERIFY_WITH_TIMEOUT(m_windows.find(Role::Label, in(u"Добро пожаловать в Orvane"_s)), patience);
    check(u"first start"_s);
    QVERIFY(m_windows.press(Role::Button, in(u"Пропустить"_s)));
    QTRY_VERIFY_WITH_TIMEOUT(m_windows.find(Role::Label, in(u"Сначала нужна модель распознавания"_s)),
                             patience);
    quit();

    m_program.install(u"tiny.en"_s);
    launch();
    go(u"Файл"_s);
    go(u"Совещание"_s);
    QVERIFY(m_windows.press(Role::ListItem, u"Talk"_s));
    QTRY_VERIFY_WITH_TIMEOUT(!transcript().isEmpty(), patience);
    for (const QString &tab : {u"Расшифровка"_s, u"Исправлено"_s, u"Протокол"_s, u"Вопросы"_s, u"Журнал"_s})
        go(tab);
    QVERIFY(m_windows.press(Role::Button, in(u"Настройки…"_s)));
    QTRY_VERIFY_WITH_TIMEOUT(m_windows.is(Role::Frame, in(u"Настройки"_s), &Element::isActive), patience);
    for (const QString &page : {u"Общие"_s, u"Модели распознавания"_s, u"Коррекция"_s, u"Промпт"_s})
        go(page);
    QVERIFY(m_windows.press(Role::PageTab, in(u"Проверка"_s)));
    QTRY_VERIFY_WITH_TIMEOUT(m_windows.is(Role::Button, in(u"Проверить снова"_s), &Element::isEnabled),
                             patience);
    check(u"Проверка"_s);
}

/// Each can be told from the others by whoever cannot see it.
void WindowsTest::checkNames()
{
    for (const Element &element : m_windows.shown()) {
        if (!element.isFocusable())
            continue;
        QVERIFY2(!element.name.isEmpty(), qPrintable(u"role %1 without a name"_s.arg(uint(element.role))));
        QVERIFY2(element.role != Role::Invalid && element.role != Role::Unknown, qPrintable(element.name));
    }
}

/// The Tab key goes through all of them and comes back.
void WindowsTest::checkFocusChain()
{
    QStringList stops;
    do {
        const QString last = stops.value(stops.size() - 1);
        pressKeys({u"Tab"_s});
        QTRY_VERIFY2_WITH_TIMEOUT(focusedStop() != last, qPrintable(u"stuck at "_s + last), patience);
        stops.append(focusedStop());
        QVERIFY2(!stops.constLast().isEmpty(), qPrintable(u"something without a name follows "_s + last));
    } while (stops.count(stops.constLast()) == 1);
}

QString WindowsTest::focusedStop() const
{
    // It may move on while one looks.
    for (int looks = 0; looks < 2; ++looks) {
        QList<Element> focused = m_windows.shown();
        focused.removeIf(
            [](const Element &element) { return !element.isFocused() || element.role == Role::Frame; });
        // What surrounds the one has the focus too.
        if (!focused.isEmpty())
            return focused.constLast().name + u" at "_s + focused.constLast().path;
    }
    return {};
}

void WindowsTest::losesNothingWhenKilled_data()
{
    QTest::addColumn<bool>("isCorrecting");
    QTest::newRow("transcribing") << false;
    QTest::newRow("correcting") << true;
}

void WindowsTest::losesNothingWhenKilled()
{
    QFETCH(const bool, isCorrecting);
    m_program.addRecord(u"0A1B2C3D-4E5F-4607-8899-AABBCCDDEEFF"_s, talk());
    const QByteArray stored = contentOf(m_program.recordFiles().constFirst());
    const QString recording = m_program.path(u"long.wav"_s);
    QCOMPARE(QProcess::execute(u"ffmpeg"_s, {u"-nostdin"_s, u"-v"_s, u"error"_s, u"-y"_s, u"-stream_loop"_s,
                                             u"40"_s, u"-i"_s, fixture(u"jfk.wav"_s), recording}),
             0);
    launch(isCorrecting ? QStringList() : QStringList{u"open"_s, recording});
    if (isCorrecting) {
        QVERIFY(m_windows.press(Role::ListItem, u"Talk"_s));
        QVERIFY(m_windows.press(Role::Button, u"Исправить"_s));
    }
    QTRY_VERIFY_WITH_TIMEOUT(m_windows.find(Role::Button, u"Отменить"_s), patience);
    kill();

    launch();
    QVERIFY(m_windows.press(Role::ListItem, u"Talk"_s));
    QTRY_COMPARE_WITH_TIMEOUT(wordsOf(transcript()), wordsOf(hello), patience);
    QCOMPARE(m_program.recordFiles().size(), 1);
    QCOMPARE(contentOf(m_program.recordFiles().constFirst()), stored);
}

ORVANE_DISPLAY_TEST_MAIN(WindowsTest, QGuiApplication)
#include "tst_windows.moc"
