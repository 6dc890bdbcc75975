#include "desktop/wayland/WaylandKeyTap.h"
#include "tests/support/Compositor.h"
#include "tests/support/Rows.h"
#include "tests/support/SessionBus.h"
#include "tests/support/WaylandEditor.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QSignalSpy>
#include <QTest>

#include <linux/input-event-codes.h>
#include <sys/prctl.h>

#include <csignal>
#include <cstdio>

using namespace Qt::StringLiterals;
using namespace orvane;
using namespace orvane::test;
using Kind = WaylandEditor::Kind;

namespace {

constexpr auto compositorKind = Compositor::Kind::ORVANE_TEST_COMPOSITOR;
constexpr bool isSway = compositorKind == Compositor::Kind::Sway;
constexpr int patience = 30'000; // ms
constexpr auto takesEscape = "--take-escape";

const QList<std::uint32_t> toggleKeys = {KEY_LEFTCTRL, KEY_LEFTALT, KEY_SPACE};

/// A run of the program in the middle of a dictation. Whoever started it kills it.
int takeEscape(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    WaylandKeyTap tap;
    QObject::connect(&tap, &KeyTap::togglePressed, [&tap] {
        tap.setEscapeIntercepted(true);
        QObject::connect(&tap, &KeyTap::escapePressed, [] {
            std::puts("taken");
            std::fflush(stdout);
        });
    });
    tap.install();
    return QCoreApplication::exec();
}

} // namespace

/// Keys of real compositors.
class TestWaylandKeys : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        if (!Compositor::isInstalled(compositorKind))
            QSKIP("the compositor is not installed");
        startCompositor();
    }

    void init()
    {
        m_tap = std::make_unique<WaylandKeyTap>();
        m_tap->install();
        QTRY_VERIFY(m_tap->isActive());
    }

    void cleanup() { m_tap.reset(); }

    void presses()
    {
        QSignalSpy tapped(m_tap.get(), &KeyTap::triggerKeyChanged);
        QSignalSpy toggled(m_tap.get(), &KeyTap::togglePressed);
        m_compositor->tap({KEY_LEFTCTRL});
        m_compositor->tap({KEY_RIGHTCTRL});
        m_compositor->tap({KEY_RIGHTCTRL, KEY_C});
        m_compositor->tap(toggleKeys);
        QTRY_COMPARE(toggled.size(), 1);
        // Of KWin 5 a modifier alone is not to be had.
        QCOMPARE(tapped.size(), isSway ? 2 : 0);
        QCOMPARE(m_tap->has(TriggerKey::RightCommand), isSway);
        QCOMPARE(m_tap->shortcuts()->once, u"Ctrl+Alt+Space"_s);
        QCOMPARE(m_tap->shortcuts()->taken, QStringList());
    }

    void followsTheTrigger()
    {
        if (!isSway)
            return; // KWin 5 gives no modifier
        QSignalSpy tapped(m_tap.get(), &KeyTap::triggerKeyChanged);
        m_tap->setTrigger(TriggerKey::RightOption);
        QTRY_VERIFY((m_compositor->tap({KEY_RIGHTALT}), !tapped.isEmpty()));
        waitForPresses();
        tapped.clear();
        m_compositor->tap({KEY_RIGHTCTRL});
        m_compositor->tap({KEY_RIGHTALT});
        QTRY_COMPARE(tapped.size(), 2);
        QCOMPARE(tapped.at(0).at(0).value<TriggerKey>(), TriggerKey::RightOption);
    }

    void escapeIsTakenWhileItIsIntercepted()
    {
        WaylandEditor terminal(*m_compositor, terminalKind);
        QSignalSpy escaped(m_tap.get(), &KeyTap::escapePressed);
        m_compositor->tap({KEY_ESC});
        QTRY_COMPARE(terminal.text(), u"\x1b"_s);
        QVERIFY(!m_tap->escapeIsMissing());

        m_tap->setEscapeIntercepted(true);
        QTRY_VERIFY((m_compositor->tap({KEY_ESC}), !escaped.isEmpty()));
        waitForPresses();
        const QString before = typed(terminal, u'a', KEY_A);
        const qsizetype heard = escaped.size();
        m_compositor->tap({KEY_ESC});
        QTRY_COMPARE(escaped.size(), heard + 1);
        QCOMPARE(typed(terminal, u's', KEY_S), before + u's');

        m_tap->setEscapeIntercepted(false);
        QTRY_VERIFY((m_compositor->tap({KEY_ESC}), terminal.text().endsWith(u'\x1b')));
        QCOMPARE(escaped.size(), heard + 1);
    }

    void keysAreGivenBack_data()
    {
        const Rows<QString> row("mode");
        row("in the usual mode", u"default"_s);
        if (isSway)
            row("in another mode", u"moving, windows"_s);
    }

    void keysAreGivenBack()
    {
        QFETCH(const QString, mode);
        WaylandEditor terminal(*m_compositor, terminalKind);
        m_tap->setEscapeIntercepted(true);
        QTest::qWait(100);
        if (isSway)
            m_compositor->command({u"mode \"%1\""_s.arg(mode)});
        QTest::qWait(100);
        m_tap->uninstall();
        QVERIFY(!m_tap->isActive());
        if (isSway)
            m_compositor->command({u"mode default"_s});
        m_compositor->tap({KEY_ESC});
        QTRY_COMPARE(terminal.text(), u"\x1b"_s);
    }

    /// What a run that was killed has taken is free once the next has begun.
    void programIsKilled()
    {
        m_tap.reset();
        WaylandEditor terminal(*m_compositor, terminalKind);
        QProcess program;
        program.setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGKILL); });
        program.start(QCoreApplication::applicationFilePath(), {QString::fromLatin1(takesEscape)});
        QTRY_VERIFY_WITH_TIMEOUT((m_compositor->tap(toggleKeys), m_compositor->tap({KEY_ESC}),
                                  program.waitForReadyRead(100), program.readAll().contains("taken")),
                                 patience);
        program.kill();
        program.waitForFinished();
        const QString before = typed(terminal, u'a', KEY_A);
        m_compositor->tap({KEY_ESC});
        QCOMPARE(typed(terminal, u's', KEY_S), before + u's'); // still swallowed

        m_tap = std::make_unique<WaylandKeyTap>();
        m_tap->install();
        QTRY_VERIFY(m_tap->isActive());
        m_compositor->tap({KEY_ESC});
        QTRY_COMPARE(terminal.text(), before + u"s\x1b"_s);
    }

    void userChoosesAnotherKey()
    {
        if (isSway)
            return; // sway's keys are chosen in its configuration
        m_tap.reset();
        setKey({u"another.program"_s, u"x"_s, u"Another"_s, u"X"_s}, Qt::CTRL | Qt::ALT | Qt::Key_Space);
        setKey(toggleIdentity, Qt::META | Qt::Key_J);
        m_tap = std::make_unique<WaylandKeyTap>();
        m_tap->install();
        QTRY_VERIFY(m_tap->isActive());
        QCOMPARE(m_tap->shortcuts()->once, u"Meta+J"_s);
        QSignalSpy toggled(m_tap.get(), &KeyTap::togglePressed);
        m_compositor->tap({KEY_LEFTMETA, KEY_J});
        QTRY_COMPARE(toggled.size(), 1);

        setKey(toggleIdentity, QKeyCombination::fromCombined(0));
        QTRY_COMPARE(m_tap->shortcuts()->taken, QStringList{u"Ctrl+Alt+Space"_s});
        setKey({u"another.program"_s, u"x"_s, u"Another"_s, u"X"_s}, QKeyCombination::fromCombined(0));
        setKey(toggleIdentity, Qt::CTRL | Qt::ALT | Qt::Key_Space);
        QTRY_COMPARE(m_tap->shortcuts()->once, u"Ctrl+Alt+Space"_s);
        QCOMPARE(m_tap->shortcuts()->taken, QStringList());
    }

    void configurationIsReadAgain()
    {
        if (!isSway)
            return; // only sway forgets its keys then
        QSignalSpy toggled(m_tap.get(), &KeyTap::togglePressed);
        QSignalSpy escaped(m_tap.get(), &KeyTap::escapePressed);
        m_tap->setEscapeIntercepted(true);
        QTRY_VERIFY((m_compositor->tap({KEY_ESC}), !escaped.isEmpty()));
        waitForPresses();
        m_compositor->command({u"reload"_s});
        m_compositor->command({u"nop"_s}); // answered after that
        toggled.clear();
        escaped.clear();
        QTRY_VERIFY_WITH_TIMEOUT((m_compositor->tap(toggleKeys), !toggled.isEmpty()), patience);
        QTRY_VERIFY_WITH_TIMEOUT((m_compositor->tap({KEY_ESC}), !escaped.isEmpty()), patience);
    }

    /// The last one.
    void compositorIsStartedAnew()
    {
        m_compositor->end();
        QTRY_VERIFY(!m_tap->isActive());
        if (isSway)
            return; // its socket has another name then: the session ends with it
        startCompositor();
        QTRY_VERIFY_WITH_TIMEOUT(m_tap->isActive(), patience);
        QSignalSpy toggled(m_tap.get(), &KeyTap::togglePressed);
        QTRY_VERIFY_WITH_TIMEOUT((m_compositor->tap(toggleKeys), !toggled.isEmpty()), patience);
    }

private:
    /// KWin gives a terminal of its own kind no window without a graphics card.
    static constexpr Kind terminalKind = isSway ? Kind::Terminal : Kind::X11Terminal;

    static inline const QStringList toggleIdentity = {u"com.orvane.Orvane"_s, u"toggle"_s, u"Orvane"_s,
                                                      u"Toggle"_s};

    /// As the user's settings of keys do it.
    static void setKey(const QStringList &identity, QKeyCombination key)
    {
        qDBusRegisterMetaType<QList<int>>();
        for (const QString &method : {u"doRegister"_s, u"setForeignShortcut"_s}) {
            QDBusMessage call = QDBusMessage::createMethodCall(u"org.kde.kglobalaccel"_s, u"/kglobalaccel"_s,
                                                               u"org.kde.KGlobalAccel"_s, method);
            QVariantList arguments = {identity};
            if (method == "setForeignShortcut"_L1)
                arguments << QVariant::fromValue(QList<int>{key.toCombined()});
            call.setArguments(arguments);
            const QDBusMessage answer = QDBusConnection::sessionBus().call(call);
            QCOMPARE(answer.errorMessage(), QString());
        }
    }

    void startCompositor()
    {
        m_compositor = std::make_unique<Compositor>(compositorKind);
        qputenv("SWAYSOCK", m_compositor->environment().value(u"SWAYSOCK"_s).toLocal8Bit());
    }

    /// Returns when whatever was pressed before has been heard.
    void waitForPresses()
    {
        QSignalSpy toggled(m_tap.get(), &KeyTap::togglePressed);
        m_compositor->tap(toggleKeys);
        QTRY_COMPARE(toggled.size(), 1);
    }

    /// What the terminal has received up to this key, and with it.
    QString typed(WaylandEditor &terminal, QChar character, std::uint32_t key)
    {
        m_compositor->tap({key});
        [&] { QTRY_VERIFY(terminal.text().endsWith(character)); }();
        return terminal.text();
    }

    std::unique_ptr<Compositor> m_compositor;
    std::unique_ptr<WaylandKeyTap> m_tap;
};

int main(int argc, char **argv)
{
    if (argc > 1 && QByteArrayView(argv[1]) == takesEscape)
        return takeEscape(argc, argv);
    const SessionBus bus{QStringList()};
    qputenv("DBUS_SESSION_BUS_ADDRESS", bus.address().toLocal8Bit());
    qputenv("XDG_CURRENT_DESKTOP", isSway ? "sway" : "KDE");
    const QCoreApplication application(argc, argv);
    TestWaylandKeys test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_waylandkeys.moc"
