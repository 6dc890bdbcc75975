#include "desktop/TextInjector.h"
#include "tests/support/FocusedEditor.h"
#include "tests/support/Rows.h"
#include "tests/support/TaskResult.h"
#include "tests/support/XDisplay.h"
#include "tests/support/XKeyboard.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QProcess>
#include <QSignalSpy>
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

/// What the keyboard is like while a text is pasted.
struct Situation
{
    QString name;
    QString text = u"Hello, мир! 🙂"_s;
    QString layouts = u"us"_s;
    QList<XKeyboard::Key> locks = {};
    QList<XKeyboard::Key> held = {};
};

} // namespace

class TestTextInjector : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { XKeyboard::setLayouts(u"us"_s); }

    void reachesTheFocusedProgram_data()
    {
        const QList<Situation> situations{
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
        const Rows<Kind, Situation> row("kind", "situation");
        // What the keys mean does not depend on who receives them.
        for (const Situation &situation : situations)
            row(u"GTK: "_s + situation.name, Kind::Gtk, situation);
        row("Qt", Kind::Qt, situations.first());
        row("terminal", Kind::Terminal, situations.first());
    }

    void reachesTheFocusedProgram()
    {
        QFETCH(Kind, kind);
        QFETCH(const Situation, situation);
        FocusedEditor editor(kind);
        XKeyboard keyboard;
        XKeyboard::setLayouts(situation.layouts, u"grp:sclk_toggle"_s);
        for (const XKeyboard::Key key : situation.locks)
            keyboard.tap(key);
        for (const XKeyboard::Key key : situation.held)
            keyboard.press(key);
        // Its program: a toolkit hands the focus on among its own windows.
        constexpr xcb_window_t ofClient = 0xffe0'0000;
        const xcb_window_t focused = keyboard.focus() & ofClient;

        const auto insertion = finished(m_injector->insert(u" \n"_s + situation.text + u"\n "_s));
        QCOMPARE(insertion.value(), Outcome::Pasted);
        QCOMPARE(keyboard.pressedKeys(), QList<int>());
        for (const XKeyboard::Key key : situation.held)
            keyboard.release(key);
        QCOMPARE(keyboard.pressedKeys(), QList<int>());
        for (const XKeyboard::Key key : situation.locks)
            keyboard.tap(key);
        XKeyboard::setLayouts(u"us"_s);
        QTRY_COMPARE(editor.text().trimmed(), situation.text);
        QCOMPARE(keyboard.focus() & ofClient, focused);
    }

    void modifierLetGoInTime()
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

    void stayOnTheClipboard()
    {
        FocusedEditor terminal(Kind::Terminal);
        const auto insertion = finished(m_injector->insert(u"говорят, long after"_s));
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

    void blankText()
    {
        QGuiApplication::clipboard()->setText(u"earlier"_s);
        FocusedEditor terminal(Kind::Terminal);
        const auto insertion = finished(m_injector->insert(u" \n\t\r\n"_s));
        QCOMPARE(insertion.value(), Outcome::Nothing);
        QCOMPARE(offered(u"clipboard"_s, u"UTF8_STRING"_s), "earlier");
        XKeyboard().tap(XKeyboard::A);
        QTRY_COMPARE(terminal.text(), u"a"_s);
    }

    void nobodyHasTheFocus_data()
    {
        const Rows<bool> row("isOfWindowManager");
        row("no window has it", false);
        row("a window of the window manager's that nobody sees", true);
    }

    void nobodyHasTheFocus()
    {
        QFETCH(const bool, isOfWindowManager);
        const XcbConnection connection = XcbConnection::open();
        xcb_window_t window = XCB_NONE;
        if (isOfWindowManager) {
            window = xcb_generate_id(connection.get());
            const std::uint32_t unmanaged = 1;
            xcb_create_window(connection.get(), XCB_COPY_FROM_PARENT, window, connection.root(), -10, -10, 1,
                              1, 0, XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT,
                              XCB_CW_OVERRIDE_REDIRECT, &unmanaged);
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
        const auto insertion = finished(m_injector->insert(u"for later"_s));
        QCOMPARE(insertion.value(), Outcome::LeftOnClipboard);
        QCOMPARE(offered(u"clipboard"_s, u"UTF8_STRING"_s), "for later");
    }

    void windowOfOurOwn()
    {
        QWindow window;
        window.show();
        window.requestActivate();
        QTRY_COMPARE(QGuiApplication::focusWindow(), &window);
        const auto insertion = finished(m_injector->insert(u"for later"_s));
        QCOMPARE(insertion.value(), Outcome::LeftOnClipboard);
    }

private:
    std::unique_ptr<TextInjector> m_injector = TextInjector::forDisplay();
};

ORVANE_DISPLAY_TEST_MAIN(TestTextInjector, QGuiApplication)
#include "tst_textinjector.moc"
