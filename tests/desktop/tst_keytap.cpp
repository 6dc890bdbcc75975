#include "desktop/KeyTap.h"
#include "tests/support/FocusedEditor.h"
#include "tests/support/Rows.h"
#include "tests/support/XDisplay.h"
#include "tests/support/XKeyboard.h"

#include <QGuiApplication>
#include <QProcess>
#include <QScopeGuard>
#include <QSignalSpy>

#include <functional>

using namespace orvane;
using namespace orvane::test;
using namespace Qt::StringLiterals;

using Key = XKeyboard::Key;

namespace {

/// What xterm sends for F5 with Ctrl.
const QString ctrlF5 = u"\x1b[15;5~"_s;

/// Another program, which takes keys before us.
class OtherProgram
{
public:
    OtherProgram() : m_connection(XcbConnection::open()) {}

    [[nodiscard]] bool holdKey(Key key)
    {
        const XcbOwned<xcb_generic_error_t> error(xcb_request_check(
            m_connection.get(),
            xcb_grab_key_checked(m_connection.get(), 0, m_connection.root(), XCB_MOD_MASK_ANY, key,
                                 XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC)));
        return !error;
    }
    [[nodiscard]] bool holdKeyboard()
    {
        const XcbOwned<xcb_grab_keyboard_reply_t> reply(xcb_grab_keyboard_reply(
            m_connection.get(),
            xcb_grab_keyboard(m_connection.get(), 0, m_connection.root(), XCB_CURRENT_TIME,
                              XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC),
            nullptr));
        return reply && reply->status == XCB_GRAB_STATUS_SUCCESS;
    }
    void end() { m_connection = {}; }

private:
    XcbConnection m_connection;
};

void makeKeysRepeatQuickly()
{
    QCOMPARE(QProcess::execute(u"xset"_s, {u"r"_s, u"rate"_s, u"100"_s, u"50"_s}), 0);
}

} // namespace

class TestKeyTap : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_keyboard = std::make_unique<XKeyboard>();
        XKeyboard::setLayouts(u"us"_s);
        m_tap = KeyTap::forDisplay();
        m_tap->install();
        QTRY_VERIFY(m_tap->isActive());
        QVERIFY(!m_tap->grabIsMissing());
    }

    void cleanup()
    {
        m_tap.reset();
        QCOMPARE(m_keyboard->pressedKeys(), QList<int>());
    }

    void triggerKeys_data()
    {
        const Rows<Key, QString, TriggerKey> row("key", "layouts", "expected");
        row("right Ctrl", XKeyboard::RightCtrl, u"us"_s, TriggerKey::RightCommand);
        row("right Super", XKeyboard::RightSuper, u"us"_s, TriggerKey::RightCommand);
        row("right Alt", XKeyboard::RightAlt, u"us"_s, TriggerKey::RightOption);
        row("AltGr", XKeyboard::RightAlt, u"de"_s, TriggerKey::RightOption);
    }

    void triggerKeys()
    {
        QFETCH(Key, key);
        QFETCH(QString, layouts);
        QFETCH(TriggerKey, expected);
        XKeyboard::setLayouts(layouts);
        m_tap->uninstall();
        m_tap->install();
        QTRY_VERIFY(m_tap->isActive());

        QSignalSpy spy(m_tap.get(), &KeyTap::triggerKeyChanged);
        QSignalSpy others(m_tap.get(), &KeyTap::otherKeyPressed);
        m_keyboard->tap(XKeyboard::LeftCtrl);
        m_keyboard->tap(XKeyboard::A);
        m_keyboard->tap(key);
        QTRY_COMPARE(spy.size(), 2);
        QCOMPARE(spy.at(0), (QVariantList{QVariant::fromValue(expected), true}));
        QCOMPARE(spy.at(1), (QVariantList{QVariant::fromValue(expected), false}));
        QCOMPARE(others.size(), 2);
    }

    void toggleKeyIsSwallowed_data()
    {
        const Rows<QList<Key>> row("locks");
        row("no lock", {});
        row("both, in the second layout", {XKeyboard::CapsLock, XKeyboard::NumLock, XKeyboard::ScrollLock});
    }

    void toggleKeyIsSwallowed()
    {
        QFETCH(QList<Key>, locks);
        XKeyboard::setLayouts(u"us,ru"_s, u"grp:sclk_toggle"_s);
        FocusedEditor terminal(FocusedEditor::Kind::Terminal);
        for (const Key lock : locks)
            m_keyboard->tap(lock);
        const auto unlock = qScopeGuard([&] {
            for (const Key lock : locks)
                m_keyboard->tap(lock);
        });
        QSignalSpy toggle(m_tap.get(), &KeyTap::togglePressed);
        m_keyboard->tap(XKeyboard::F5);
        m_keyboard->tap(XKeyboard::LeftCtrl, XKeyboard::F5);
        m_keyboard->tap(XKeyboard::F5);
        QTRY_COMPARE(toggle.size(), 2);
        QTRY_COMPARE(terminal.text(), ctrlF5);
    }

    void escapeIsSwallowedWhileIntercepted()
    {
        FocusedEditor terminal(FocusedEditor::Kind::Terminal);
        QSignalSpy escape(m_tap.get(), &KeyTap::escapePressed);
        m_keyboard->tap(XKeyboard::Escape);
        QTRY_COMPARE(terminal.text(), u"\x1b"_s);

        m_tap->setEscapeIntercepted(true);
        untilItHappens([&] { m_keyboard->tap(XKeyboard::Escape); }, escape);
        const QString before = type(XKeyboard::A, terminal);
        const qsizetype pressed = escape.size();
        m_keyboard->tap(XKeyboard::Escape);
        QTRY_COMPARE(escape.size(), pressed + 1);

        // As when it ends a dictation: it stays ours until it is let go.
        connect(m_tap.get(), &KeyTap::escapePressed, this, [this] { m_tap->setEscapeIntercepted(false); });
        makeKeysRepeatQuickly();
        m_keyboard->press(XKeyboard::Escape);
        QTRY_COMPARE(escape.size(), pressed + 2);
        QTest::qWait(300);
        m_keyboard->release(XKeyboard::Escape);
        QCOMPARE(type(XKeyboard::S, terminal), before + u's');

        m_keyboard->tap(XKeyboard::Escape);
        QTRY_COMPARE(terminal.text(), before + u"s\x1b"_s);
        QCOMPARE(escape.size(), pressed + 2);
    }

    void heldKeyIsOnePress()
    {
        makeKeysRepeatQuickly();
        FocusedEditor terminal(FocusedEditor::Kind::Terminal);
        m_keyboard->press(XKeyboard::A);
        QTRY_VERIFY(terminal.text().size() > 5); // keys do repeat here
        m_keyboard->release(XKeyboard::A);

        QSignalSpy toggle(m_tap.get(), &KeyTap::togglePressed);
        m_keyboard->press(XKeyboard::F5);
        QTRY_COMPARE(toggle.size(), 1);
        QTest::qWait(500);
        QCOMPARE(toggle.size(), 1);
        m_keyboard->release(XKeyboard::F5);
        m_keyboard->tap(XKeyboard::F5);
        QTRY_COMPARE(toggle.size(), 2);
    }

    void followsTheKeyboardMap()
    {
        QSignalSpy toggle(m_tap.get(), &KeyTap::togglePressed);
        QSignalSpy trigger(m_tap.get(), &KeyTap::triggerKeyChanged);
        QCOMPARE(
            QProcess::execute(u"xmodmap"_s, {u"-e"_s, u"keycode 71 = F6"_s, u"-e"_s, u"keycode 72 = F5"_s,
                                             u"-e"_s, u"keycode 38 = Control_R"_s}),
            0);
        untilItHappens([this] { m_keyboard->tap(XKeyboard::F6); }, toggle);
        const qsizetype before = toggle.size();
        m_keyboard->tap(XKeyboard::F5);
        trigger.clear();
        m_keyboard->tap(XKeyboard::A);
        QTRY_COMPARE(trigger.size(), 2);
        QCOMPARE(toggle.size(), before);
    }

    void keyWithAnotherMeaning_data()
    {
        const Rows<QString, QString, bool, bool, bool> row("layouts", "options", "hasControl", "hasAlt",
                                                           "altTypes");
        row("plain", u"us"_s, {}, true, true, false);
        row("AltGr", u"de"_s, {}, true, true, true);
        row("right Ctrl changes the layout", u"us,ru"_s, u"grp:rctrl_toggle"_s, false, true, false);
        row("right Alt composes", u"us"_s, u"compose:ralt"_s, true, false, false);
    }

    void keyWithAnotherMeaning()
    {
        QFETCH(const QString, layouts);
        QFETCH(const QString, options);
        XKeyboard::setLayouts(layouts, options);
        const auto restore = qScopeGuard([] { XKeyboard::setLayouts(u"us"_s); });
        m_tap->uninstall();
        m_tap->install();
        QTRY_VERIFY(m_tap->isActive());
        QTEST(m_tap->has(TriggerKey::RightCommand), "hasControl");
        QTEST(m_tap->has(TriggerKey::RightOption), "hasAlt");
        QTEST(m_tap->rightOptionTypes(), "altTypes");
    }

    void keyHeldByAnotherProgram()
    {
        m_tap->uninstall();
        QVERIFY(!m_tap->isActive());
        OtherProgram other;
        QTRY_VERIFY(other.holdKey(XKeyboard::F5)); // we have let go of it

        QSignalSpy toggle(m_tap.get(), &KeyTap::togglePressed);
        QSignalSpy trigger(m_tap.get(), &KeyTap::triggerKeyChanged);
        m_tap->install();
        QTRY_VERIFY(m_tap->grabIsMissing());
        QVERIFY(m_tap->isActive());
        m_keyboard->tap(XKeyboard::F5);
        m_keyboard->tap(XKeyboard::RightCtrl);
        QTRY_COMPARE(trigger.size(), 2);
        QCOMPARE(toggle.size(), 0);

        QSignalSpy missing(m_tap.get(), &KeyTap::grabIsMissingChanged);
        other.end();
        QTRY_VERIFY(!m_tap->grabIsMissing());
        QCOMPARE(missing.size(), 1);
        m_keyboard->tap(XKeyboard::F5);
        QTRY_COMPARE(toggle.size(), 1);
    }

    void keyboardHeldByAnotherProgram()
    {
        QSignalSpy toggle(m_tap.get(), &KeyTap::togglePressed);
        QSignalSpy trigger(m_tap.get(), &KeyTap::triggerKeyChanged);
        OtherProgram other;
        m_keyboard->press(XKeyboard::RightCtrl);
        QVERIFY(other.holdKeyboard());
        m_keyboard->release(XKeyboard::RightCtrl);
        m_keyboard->tap(XKeyboard::F5); // the other's, such as a screen locker's
        other.end();

        // Whatever was missed meanwhile, the next presses count.
        untilItHappens([this] { m_keyboard->tap(XKeyboard::F5); }, toggle);
        trigger.clear();
        m_keyboard->tap(XKeyboard::RightCtrl);
        QTRY_COMPARE(trigger.size(), 2);
        QVERIFY(trigger.at(0).at(1).toBool());
    }

    void displayThatEnds()
    {
        const QByteArray original = qgetenv("DISPLAY");
        const auto restore = qScopeGuard([&] { qputenv("DISPLAY", original); });
        auto first = std::make_unique<XDisplay>();
        qputenv("DISPLAY", first->name().toLatin1());
        const std::unique_ptr<KeyTap> tap = KeyTap::forDisplay();
        tap->install();
        QTRY_VERIFY(tap->isActive());
        first.reset();
        QTRY_VERIFY(!tap->isActive());

        const XDisplay second;
        qputenv("DISPLAY", second.name().toLatin1());
        QTRY_VERIFY(tap->isActive());
        QSignalSpy toggle(tap.get(), &KeyTap::togglePressed);
        XKeyboard keyboard(second.name());
        untilItHappens([&] { keyboard.tap(XKeyboard::F5); }, toggle);
    }

private:
    /// Repeats what has its effect only once the server or the tap has done what it was asked; returns when
    /// whatever the repetitions caused has arrived.
    void untilItHappens(const std::function<void()> &act, const QSignalSpy &signal)
    {
        QTRY_VERIFY((act(), !signal.isEmpty()));
        QSignalSpy last(m_tap.get(), &KeyTap::triggerKeyChanged);
        m_keyboard->tap(XKeyboard::RightSuper);
        QTRY_COMPARE(last.size(), 2);
    }

    /// What the terminal has received up to this key, and with it.
    QString type(Key key, FocusedEditor &terminal)
    {
        m_keyboard->tap(key);
        const QChar character(key == XKeyboard::A ? u'a' : u's');
        [&] { QTRY_VERIFY(terminal.text().endsWith(character)); }();
        return terminal.text();
    }

    std::unique_ptr<KeyTap> m_tap;
    std::unique_ptr<XKeyboard> m_keyboard;
};

ORVANE_DISPLAY_TEST_MAIN(TestKeyTap, QGuiApplication)
#include "tst_keytap.moc"
