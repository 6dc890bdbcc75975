#include "desktop/TextInjector.h"
#include "tests/support/FocusedEditor.h"
#include "tests/support/TaskResult.h"
#include "tests/support/XDisplay.h"
#include "tests/support/XKeyboard.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QProcess>
#include <QScopeGuard>
#include <QSignalSpy>
#include <QTest>
#include <QWindow>

#include <string_view>

using namespace orvane;
using namespace orvane::test;
using namespace Qt::StringLiterals;

using Kind = FocusedEditor::Kind;
using Outcome = TextInjector::Outcome;

namespace {

/// What another program gets from a selection.
QByteArray offered(const QString &selection, const QString &type)
{
    QProcess reader;
    reader.start(u"xclip"_s, {u"-o"_s, u"-selection"_s, selection, u"-t"_s, type});
    // The clipboard is served by this program's event loop.
    QSignalSpy finished(&reader, &QProcess::finished);
    if (finished.isEmpty())
        finished.wait();
    return reader.readAllStandardOutput();
}

} // namespace

class TestTextInjector : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void reachesTheFocusedProgram_data();
    void reachesTheFocusedProgram();
    void modifierLetGoInTime();
    void stayOnTheClipboard();
    void blankText();
    void nobodyHasTheFocus_data();
    void nobodyHasTheFocus();
    void windowOfOurOwn();
    void displayWithoutGlobalKeys();

private:
    std::unique_ptr<TextInjector> m_injector = TextInjector::forDisplay();
};

void TestTextInjector::init()
{
    XKeyboard::setLayouts(u"us"_s);
}

void TestTextInjector::reachesTheFocusedProgram_data()
{
    struct Row
    {
        QString name;
        QString text = u"Hello, мир! 🙂"_s;
        QString layouts = u"us"_s;
        QList<XKeyboard::Key> locks = {};
        QList<XKeyboard::Key> held = {};
    };
    const QList<Row> rows{
        {.name = u"two scripts and an emoji"_s},
        {.name = u"many lines"_s, .text = u"one\nдва\n\n\tfour"_s},
        {.name = u"Russian active"_s, .layouts = u"us,ru"_s, .locks = {XKeyboard::ScrollLock}},
        {.name = u"Russian alone"_s, .layouts = u"ru"_s},
        {.name = u"another place of V"_s, .layouts = u"us(dvorak)"_s},
        {.name = u"Caps Lock and Num Lock"_s, .locks = {XKeyboard::CapsLock, XKeyboard::NumLock}},
        {.name = u"right Alt held"_s, .held = {XKeyboard::RightAlt}},
        {.name = u"AltGr, Shift and right Ctrl held"_s,
         .layouts = u"de"_s,
         .held = {XKeyboard::RightAlt, XKeyboard::LeftShift, XKeyboard::RightCtrl}},
    };
    QTest::addColumn<Kind>("kind");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("layouts");
    QTest::addColumn<QList<XKeyboard::Key>>("locks");
    QTest::addColumn<QList<XKeyboard::Key>>("held");
    const auto add = [](const char *kindName, Kind kind, const Row &row) {
        QTest::addRow("%s: %s", kindName, qPrintable(row.name))
            << kind << row.text << row.layouts << row.locks << row.held;
    };
    // What the keys mean does not depend on who receives them.
    for (const Row &row : rows)
        add("GTK", Kind::Gtk, row);
    add("Qt", Kind::Qt, rows.first());
    add("terminal", Kind::Terminal, rows.first());
}

void TestTextInjector::reachesTheFocusedProgram()
{
    QFETCH(Kind, kind);
    QFETCH(QString, text);
    QFETCH(QString, layouts);
    QFETCH(QList<XKeyboard::Key>, locks);
    QFETCH(QList<XKeyboard::Key>, held);
    FocusedEditor editor(kind);
    XKeyboard keyboard;
    XKeyboard::setLayouts(layouts, u"grp:sclk_toggle"_s);
    for (const XKeyboard::Key key : locks)
        keyboard.tap(key);
    for (const XKeyboard::Key key : held)
        keyboard.press(key);
    // Its program: a toolkit hands the focus on among its own windows.
    constexpr xcb_window_t ofClient = 0xffe0'0000;
    const xcb_window_t focused = keyboard.focus() & ofClient;

    const TaskResult insertion(m_injector->insert(u" \n"_s + text + u"\n "_s));
    QTRY_VERIFY(insertion.isDone());
    QCOMPARE(insertion.value(), Outcome::Pasted);
    QCOMPARE(keyboard.pressedKeys(), QList<int>());
    for (const XKeyboard::Key key : held)
        keyboard.release(key);
    QCOMPARE(keyboard.pressedKeys(), QList<int>());
    for (const XKeyboard::Key key : locks)
        keyboard.tap(key);
    XKeyboard::setLayouts(u"us"_s);
    QTRY_COMPARE(editor.text().trimmed(), text);
    QCOMPARE(keyboard.focus() & ofClient, focused);
}

void TestTextInjector::modifierLetGoInTime()
{
    FocusedEditor editor(Kind::Gtk);
    XKeyboard keyboard;
    keyboard.press(XKeyboard::RightAlt);
    const TaskResult insertion(m_injector->insert(u"patient"_s));
    QTest::qWait(100);
    QVERIFY(!insertion.isDone());
    QCOMPARE(keyboard.pressedKeys(), QList<int>{XKeyboard::RightAlt});
    keyboard.release(XKeyboard::RightAlt);
    QTRY_VERIFY(insertion.isDone());
    QTRY_COMPARE(editor.text().trimmed(), u"patient"_s);
}

void TestTextInjector::stayOnTheClipboard()
{
    FocusedEditor terminal(Kind::Terminal);
    const TaskResult insertion(m_injector->insert(u"говорят, long after"_s));
    QTRY_VERIFY(insertion.isDone());
    for (const QString &selection : {u"clipboard"_s, u"primary"_s}) {
        const QList<QByteArray> types = offered(selection, u"TARGETS"_s).split('\n');
        QVERIFY(types.contains("UTF8_STRING"));
        QVERIFY(types.contains("text/plain"));
        QVERIFY(types.contains("org.nspasteboard.ConcealedType"));
        QCOMPARE(offered(selection, u"x-kde-passwordManagerHint"_s), "secret");
        QCOMPARE(offered(selection, u"org.nspasteboard.ConcealedType"_s), "");
        QCOMPARE(offered(selection, u"UTF8_STRING"_s), "говорят, long after");
    }
}

void TestTextInjector::blankText()
{
    QGuiApplication::clipboard()->setText(u"earlier"_s);
    FocusedEditor terminal(Kind::Terminal);
    const TaskResult insertion(m_injector->insert(u" \n\t\r\n"_s));
    QTRY_VERIFY(insertion.isDone());
    QCOMPARE(insertion.value(), Outcome::Nothing);
    QCOMPARE(offered(u"clipboard"_s, u"UTF8_STRING"_s), "earlier");
    XKeyboard().tap(XKeyboard::A);
    QTRY_COMPARE(terminal.text(), u"a"_s);
}

void TestTextInjector::nobodyHasTheFocus_data()
{
    QTest::addColumn<bool>("isOfWindowManager");
    QTest::newRow("no window has it") << false;
    QTest::newRow("a window of the window manager's that nobody sees") << true;
}

void TestTextInjector::nobodyHasTheFocus()
{
    QFETCH(const bool, isOfWindowManager);
    const XcbConnection connection = XcbConnection::open();
    xcb_window_t window = XCB_NONE;
    if (isOfWindowManager) {
        window = xcb_generate_id(connection.get());
        const std::uint32_t unmanaged = 1;
        xcb_create_window(connection.get(), XCB_COPY_FROM_PARENT, window, connection.root(), -10, -10, 1, 1,
                          0, XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, XCB_CW_OVERRIDE_REDIRECT,
                          &unmanaged);
        xcb_map_window(connection.get(), window);
        constexpr std::string_view name = "_NET_ACTIVE_WINDOW";
        const XcbOwned<xcb_intern_atom_reply_t> atom(xcb_intern_atom_reply(
            connection.get(), xcb_intern_atom(connection.get(), 0, name.size(), name.data()), nullptr));
        const xcb_window_t none = XCB_NONE;
        xcb_change_property(connection.get(), XCB_PROP_MODE_REPLACE, connection.root(), atom->atom,
                            XCB_ATOM_WINDOW, 32, 1, &none);
    }
    xcb_set_input_focus(connection.get(), XCB_INPUT_FOCUS_NONE, window, XCB_CURRENT_TIME);
    xcb_flush(connection.get());
    QTRY_COMPARE(XKeyboard().focus(), window);
    const TaskResult insertion(m_injector->insert(u"for later"_s));
    QTRY_VERIFY(insertion.isDone());
    QCOMPARE(insertion.value(), Outcome::LeftOnClipboard);
    QCOMPARE(offered(u"clipboard"_s, u"UTF8_STRING"_s), "for later");
}

void TestTextInjector::windowOfOurOwn()
{
    QWindow window;
    window.show();
    window.requestActivate();
    QTRY_COMPARE(QGuiApplication::focusWindow(), &window);
    const TaskResult insertion(m_injector->insert(u"for later"_s));
    QTRY_VERIFY(insertion.isDone());
    QCOMPARE(insertion.value(), Outcome::LeftOnClipboard);
}

void TestTextInjector::displayWithoutGlobalKeys()
{
    FocusedEditor terminal(Kind::Terminal);
    qputenv("WAYLAND_DISPLAY", "wayland-0");
    const auto restore = qScopeGuard([] { qunsetenv("WAYLAND_DISPLAY"); });
    const TaskResult insertion(m_injector->insert(u" записка\n"_s));
    QTRY_VERIFY(insertion.isDone());
    QCOMPARE(insertion.value(), Outcome::LeftOnClipboard);
    QCOMPARE(QGuiApplication::clipboard()->text(), u"записка"_s);
    QCOMPARE(terminal.text(), QString());
}

ORVANE_DISPLAY_TEST_MAIN(TestTextInjector)
#include "tst_textinjector.moc"
