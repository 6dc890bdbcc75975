#include "tests/e2e/Surroundings.h"
#include "tests/support/Compositor.h"
#include "tests/support/Files.h"
#include "tests/support/Rows.h"
#include "tests/support/WaylandEditor.h"
#include "tests/support/WordError.h"

#include <QTest>

#include <linux/input-event-codes.h>

using namespace Qt::StringLiterals;
using namespace orvane;
using namespace orvane::test;
using Kind = WaylandEditor::Kind;

namespace {

// Long enough for a busy machine under a sanitizer.
constexpr int patience = 120'000;
constexpr auto compositorKind = Compositor::Kind::ORVANE_TEST_COMPOSITOR;
constexpr bool isSway = compositorKind == Compositor::Kind::Sway;

} // namespace

/// The program as its user has it in a Wayland session: keys, a voice, and an
/// editor that has the focus.
class WaylandDictationTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        if (!Compositor::isInstalled(compositorKind))
            QSKIP("the compositor is not installed");
        m_program.install(u"base"_s);
        // What lets the program press keys in KWin.
        put(m_program.path(u"data/applications/com.orvane.Orvane.desktop"_s),
            "[Desktop "
            "Entry]\nType=Application\nName=Orvane\nX-KDE-Wayland-Interfaces=org_kde_kwin_fake_input\n"
            "Exec=" +
                QFileInfo(QFileInfo(QStringLiteral(ORVANE_PROGRAM)).path() + u"/../libexec/orvane-desktop"_s)
                    .canonicalFilePath()
                    .toLocal8Bit() +
                '\n');
        m_compositor = std::make_unique<Compositor>(compositorKind, m_program.environment());
        const QProcessEnvironment session = m_compositor->environment();
        for (const QString &name : {u"DISPLAY"_s, u"XAUTHORITY"_s, u"WAYLAND_DISPLAY"_s, u"SWAYSOCK"_s,
                                    u"XDG_CURRENT_DESKTOP"_s, u"QT_QPA_PLATFORM"_s})
            m_program.setEnvironment(name, session.value(name));
        startApplication();
    }

    void cleanupTestCase()
    {
        if (!m_application)
            return;
        m_application->terminate();
        QVERIFY(m_application->waitForFinished(patience));
    }

    void cleanup()
    {
        if (!m_application)
            return;
        QVERIFY2(m_application->state() == QProcess::Running, "the program has ended");
        if (QTest::currentTestFailed())
            (void)m_program.run({u"cancel"_s});
        QTRY_COMPARE_WITH_TIMEOUT(status(), "idle", patience);
    }

    void putsSpeechIntoTheEditor_data()
    {
        const QString english =
            u"And so my fellow Americans ask not what your country can do for you ask what you "
            "can do for your country"_s;
        const Rows<Kind, QString, QString, QList<std::uint32_t>> row("editor", "recording", "said", "held");
        row("GTK, English", Kind::Gtk, fixture(u"jfk.wav"_s), english, {});
        row("GTK, Russian, a modifier held", Kind::Gtk, fixture(u"russian.wav"_s),
            QString::fromUtf8(contentOf(fixture(u"russian.txt"_s))), {KEY_LEFTCTRL});
        if (isSway) // the other gives a terminal without a graphics card no window
            row("terminal, English", Kind::Terminal, fixture(u"jfk.wav"_s), english, {});
    }

    void putsSpeechIntoTheEditor()
    {
        QFETCH(const Kind, editor);
        QFETCH(const QString, recording);
        QFETCH(const QString, said);
        QFETCH(const QList<std::uint32_t>, held);
        WaylandEditor focused(*m_compositor, editor);
        pressKeys();
        QTRY_COMPARE_WITH_TIMEOUT(status(), "recording", patience);
        m_sound.speak(Surroundings::microphone, recording);
        m_compositor->tap({KEY_X}); // the indicator has not taken the focus
        for (const std::uint32_t key : held)
            m_compositor->press(key);
        if (held.isEmpty())
            pressKeys();
        else // which would make others of them
            QCOMPARE(m_program.run({u"toggle"_s}).exitCode, 0);
        QTRY_COMPARE_WITH_TIMEOUT(status(), "idle", patience);
        QTRY_VERIFY_WITH_TIMEOUT(!clipboard().isEmpty(), patience);
        QTest::qWait(500);
        for (const std::uint32_t key : held)
            m_compositor->release(key);

        QTRY_VERIFY_WITH_TIMEOUT(focused.text().size() > 1, patience);
        const QString text = focused.text();
        QCOMPARE(text.first(1), u"x"_s);
        QCOMPARE(text.sliced(1), clipboard());
        VERIFY_WORDS(text.sliced(1), said);
    }

    void escapeCancels()
    {
        WaylandEditor terminal(*m_compositor, terminalKind);
        pressKeys();
        QTRY_COMPARE_WITH_TIMEOUT(status(), "recording", patience);
        m_compositor->tap({KEY_ESC});
        QTRY_COMPARE_WITH_TIMEOUT(status(), "idle", patience);
        m_compositor->tap({KEY_A});
        QTRY_COMPARE_WITH_TIMEOUT(terminal.text(), u"a"_s, patience);
        QTRY_VERIFY_WITH_TIMEOUT((m_compositor->tap({KEY_ESC}), terminal.text().endsWith(u'\x1b')), patience);
    }

    /// What it has taken then is free once it has been started again.
    void isKilledDuringADictation()
    {
        WaylandEditor terminal(*m_compositor, terminalKind);
        pressKeys();
        QTRY_COMPARE_WITH_TIMEOUT(status(), "recording", patience);
        m_application->kill();
        QVERIFY(m_application->waitForFinished(patience));
        startApplication();
        QTRY_VERIFY_WITH_TIMEOUT((m_compositor->tap({KEY_ESC}), terminal.text().startsWith(u'\x1b')),
                                 patience);
        pressKeys();
        QTRY_COMPARE_WITH_TIMEOUT(status(), "recording", patience);
        pressKeys();
    }

private:
    /// KWin gives a terminal of its own kind no window without a graphics card.
    static constexpr Kind terminalKind = isSway ? Kind::Terminal : Kind::X11Terminal;

    void startApplication()
    {
        m_application = m_program.start({u"--background"_s});
        QTRY_COMPARE_WITH_TIMEOUT(status(), "idle", patience);
    }

    /// Those that begin a dictation here, and end it.
    void pressKeys()
    {
        if (isSway) {
            m_compositor->tap({KEY_RIGHTCTRL});
            QTest::qWait(60);
            m_compositor->tap({KEY_RIGHTCTRL});
        } else {
            m_compositor->tap({KEY_LEFTCTRL, KEY_LEFTALT, KEY_SPACE});
        }
    }

    [[nodiscard]] QByteArray status() const { return m_program.run({u"status"_s}).output.trimmed(); }

    /// What another program gets when it pastes.
    [[nodiscard]] QString clipboard() const
    {
        QProcess reader;
        reader.setProcessEnvironment(m_compositor->environment());
        reader.start(u"wl-paste"_s, {u"--no-newline"_s});
        reader.waitForFinished();
        return QString::fromUtf8(reader.readAllStandardOutput());
    }

    OrvaneProgram m_program;
    Surroundings m_surroundings{m_program};
    SoundServer &m_sound = m_surroundings.sound();
    std::unique_ptr<Compositor> m_compositor;
    std::unique_ptr<QProcess> m_application;
};

QTEST_GUILESS_MAIN(WaylandDictationTest)
#include "tst_waylanddictation.moc"
