#include "desktop/DesktopSession.h"
#include "desktop/TextInjector.h"
#include "tests/support/Compositor.h"
#include "tests/support/Files.h"
#include "tests/support/Rows.h"
#include "tests/support/TaskResult.h"
#include "tests/support/WaylandEditor.h"

#include <QGuiApplication>
#include <QTest>

#include <linux/input-event-codes.h>

using namespace orvane;
using namespace orvane::test;
using namespace Qt::StringLiterals;

using Kind = WaylandEditor::Kind;
using Outcome = TextInjector::Outcome;

namespace {

constexpr auto compositorKind = Compositor::Kind::ORVANE_TEST_COMPOSITOR;
constexpr bool isSway = compositorKind == Compositor::Kind::Sway;

/// What the keyboard is like while a text is pasted.
struct Situation
{
    QString name;
    const char *layout = "us";
    const char *variant = "";
    QList<std::uint32_t> held = {};
};

} // namespace

class TestWaylandInjector : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        if (!Compositor::isInstalled(compositorKind))
            QSKIP("the compositor is not installed");
        // What lets this program press keys in KWin.
        put(qEnvironmentVariable("XDG_DATA_HOME") + u"/applications/orvane-test.desktop"_s,
            "[Desktop Entry]\nType=Application\nName=Test\nX-KDE-Wayland-Interfaces=org_kde_kwin_fake_input\n"
            "Exec=" +
                QCoreApplication::applicationFilePath().toLocal8Bit() + '\n');
        m_compositor = std::make_unique<Compositor>(compositorKind);
        const QProcessEnvironment environment = m_compositor->environment();
        qputenv("WAYLAND_DISPLAY", environment.value(u"WAYLAND_DISPLAY"_s).toLocal8Bit());
        QVERIFY(DesktopSession::ofThisProcess().isWayland());
        QVERIFY(DesktopSession::ofThisProcess().offers("zwlr_data_control_manager_v1", 2));
        QVERIFY(!DesktopSession::ofThisProcess().offers("zwlr_data_control_manager_v1", 3));
        m_injector = TextInjector::forDisplay();
    }

    void reachesTheFocusedProgram_data()
    {
        QList<Situation> situations{
            {.name = u"plain"_s},
            {.name = u"Ctrl held"_s, .held = {KEY_LEFTCTRL}},
            {.name = u"Shift and AltGr held"_s, .held = {KEY_RIGHTALT, KEY_LEFTSHIFT}},
        };
        if (isSway) {
            situations << Situation{.name = u"Russian alone"_s, .layout = "ru"};
            situations << Situation{.name = u"another place of V"_s, .variant = "dvorak"};
        }
        const Rows<Kind, Situation> row("kind", "situation");
        for (const Situation &situation : std::as_const(situations))
            row(u"GTK: "_s + situation.name, Kind::Gtk, situation);
        if (isSway) // the other gives a terminal without a graphics card no window
            row("terminal", Kind::Terminal, situations.first());
    }

    void reachesTheFocusedProgram()
    {
        QFETCH(const Kind, kind);
        QFETCH(const Situation, situation);
        const QString text = u"Übergrößen, Объём! 🙂 "_s + situation.name;
        WaylandEditor editor(*m_compositor, kind);
        if (isSway)
            m_compositor->setLayout(situation.layout, situation.variant);
        for (const std::uint32_t key : situation.held)
            m_compositor->press(key);
        const auto insertion = finished(m_injector->insert(u" \n"_s + text + u"\n "_s));
        for (const std::uint32_t key : situation.held)
            m_compositor->release(key);
        if (isSway)
            m_compositor->setLayout("us");
        QTRY_COMPARE(editor.text(), text);
        QCOMPARE(insertion.value(), Outcome::Pasted);
    }

    void nobodyHasTheFocus()
    {
        const QString text = u"слово за словом "_s.repeated(20'000).trimmed(); // more than a pipe holds
        QCOMPARE(finished(m_injector->insert(text)).value(), Outcome::LeftOnClipboard);
        QCOMPARE(finished(m_injector->insert(u" \n\t"_s)).value(), Outcome::Nothing);
        for (const QStringList &selection : {QStringList(), QStringList(u"--primary"_s)}) {
            const QList<QByteArray> types = offered(selection + QStringList{u"--list-types"_s}).split('\n');
            QVERIFY(types.contains("UTF8_STRING"));
            QVERIFY(types.contains("text/plain"));
            QVERIFY(types.contains("org.nspasteboard.ConcealedType"));
            QCOMPARE(offered(selection + QStringList{u"-t"_s, u"x-kde-passwordManagerHint"_s}), "secret");
            QCOMPARE(offered(selection), text.toUtf8());
        }
    }

    /// The last one.
    void compositorEnds()
    {
        m_compositor->end();
        QCOMPARE(finished(m_injector->insert(u"to nobody"_s)).value(), Outcome::Nothing);
        Compositor another(compositorKind);
        qputenv("WAYLAND_DISPLAY", another.environment().value(u"WAYLAND_DISPLAY"_s).toLocal8Bit());
        WaylandEditor editor(another, Kind::Gtk);
        QCOMPARE(finished(m_injector->insert(u"again"_s)).value(), Outcome::Pasted);
        QTRY_COMPARE(editor.text(), u"again"_s);
    }

private:
    /// What another program gets when it pastes.
    [[nodiscard]] QByteArray offered(const QStringList &options) const
    {
        QProcess reader;
        reader.setProcessEnvironment(m_compositor->environment());
        reader.start(u"wl-paste"_s, QStringList{u"--no-newline"_s} + options);
        reader.waitForFinished();
        return reader.readAllStandardOutput();
    }

    std::unique_ptr<Compositor> m_compositor;
    std::unique_ptr<TextInjector> m_injector;
};

QTEST_MAIN(TestWaylandInjector)
#include "tst_waylandinjector.moc"
