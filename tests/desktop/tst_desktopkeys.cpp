#include "desktop/wayland/GnomeKeybindings.h"
#include "desktop/wayland/GnomeShortcuts.h"
#include "desktop/wayland/PortalShortcuts.h"
#include "desktop/wayland/SwayConfig.h"
#include "desktop/wayland/WaylandKeyTap.h"
#include "tests/support/FakePortal.h"
#include "tests/support/Rows.h"
#include "tests/support/SessionBus.h"

#include <QSignalSpy>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;
using namespace orvane;
using namespace orvane::test;

namespace {

constexpr auto gnomeFolder = "org.gnome.settings-daemon.plugins.media-keys.custom-keybinding:"
                             "/org/gnome/settings-daemon/plugins/media-keys/custom-keybindings/";

QString gsettings(const QStringList &arguments)
{
    QProcess process;
    process.start(u"gsettings"_s, arguments);
    process.waitForFinished();
    return QString::fromUtf8(process.readAllStandardOutput()).trimmed();
}

} // namespace

/// The keys that desktops give, asked for on a session bus of the test's own.
class TestDesktopKeys : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_home = std::make_unique<QTemporaryDir>();
        qputenv("XDG_CURRENT_DESKTOP", "Hyprland");
    }

    void cleanup()
    {
        m_tap.reset();
        m_portal.reset();
    }

    void portalGivesKeys_data()
    {
        const Rows<FakePortal::User> row("user");
        row("agreed", FakePortal::User::Agrees);
        row("reported as failed", FakePortal::User::AgreesButIsReportedToHaveFailed);
    }

    void portalGivesKeys()
    {
        QFETCH(const FakePortal::User, user);
        startPortal(user);
        install();
        QTRY_VERIFY(m_tap->isActive());
        QCOMPARE(m_portal->calls.constFirst(), u"Register"_s);
        QVERIFY(m_tap->escapeIsMissing());
        QCOMPARE(m_tap->shortcuts()->once, u"CTRL+ALT+space"_s);
        QCOMPARE(m_tap->shortcuts()->twice, u"правый Ctrl"_s);

        QSignalSpy toggled(m_tap.get(), &KeyTap::togglePressed);
        QSignalSpy tapped(m_tap.get(), &KeyTap::triggerKeyChanged);
        m_portal->activate(u"toggle"_s);
        m_portal->activate(u"tap"_s);
        QTRY_COMPARE(tapped.size(), 2); // down and up
        QCOMPARE(toggled.size(), 1);

        m_portal->changeTrigger(u"toggle"_s, u"Press <Alt><Control>space"_s);
        QTRY_COMPARE(m_tap->shortcuts()->once, u"Ctrl+Alt+Space"_s);
        QVERIFY(m_tap->shortcuts()->twice.isEmpty());
    }

    void portalThatIsStartedAnew()
    {
        startPortal(FakePortal::User::Agrees);
        install();
        QTRY_VERIFY(m_tap->isActive());
        m_portal.reset();
        QTRY_VERIFY(!m_tap->isActive()); // nobody starts it here
        startPortal(FakePortal::User::Agrees);
        QTRY_VERIFY(m_tap->isActive());
        QCOMPARE(m_portal->calls.constFirst(), u"Register"_s);

        m_portal->calls.clear();
        m_portal->closeSession();
        QTRY_VERIFY(m_portal->calls.contains(u"BindShortcuts"_s));
        QTRY_VERIFY(m_tap->isActive());
        QSignalSpy toggled(m_tap.get(), &KeyTap::togglePressed);
        m_portal->activate(u"toggle"_s);
        QTRY_COMPARE(toggled.size(), 1);
    }

    void refusalIsRemembered_data()
    {
        const Rows<FakePortal::User> row("user");
        row("refused", FakePortal::User::Refuses);
        row("the session ends before the answer", FakePortal::User::RefusesAndTheSessionEnds);
    }

    void refusalIsRemembered()
    {
        QFETCH(const FakePortal::User, user);
        startPortal(user);
        install();
        QTRY_VERIFY(m_tap->canBeSetUp());
        QVERIFY(!m_tap->isActive());
        m_tap.reset();

        m_portal->calls.clear();
        install();
        QTRY_VERIFY(m_tap->canBeSetUp());
        QVERIFY(!m_portal->calls.contains(u"BindShortcuts"_s)); // the user was not bothered again

        QSignalSpy ended(m_tap.get(), &KeyTap::setUpEnded);
        m_tap->setUp();
        QTRY_COMPARE(ended.size(), 1);
        QVERIFY(!ended.at(0).at(0).toString().isEmpty());
        m_portal->user = FakePortal::User::Agrees;
        m_tap->setUp();
        QTRY_COMPARE(ended.size(), 2);
        QCOMPARE(ended.at(1).at(0).toString(), QString());
        QVERIFY(m_tap->isActive() && !m_tap->canBeSetUp());
    }

    void portalThatEndsBeforeItAnswers()
    {
        startPortal(FakePortal::User::IsSilent);
        install();
        QTRY_VERIFY(m_portal->calls.contains(u"BindShortcuts"_s));
        m_portal.reset();
        QSignalSpy settled(m_tap.get(), &KeyTap::keysChanged);
        QTRY_VERIFY(!settled.isEmpty());
        QVERIFY(!m_tap->isActive() && !m_tap->canBeSetUp());
    }

    /// Nobody has keys before the user has answered, whoever else wants them meanwhile.
    void userIsStillAsked()
    {
        startPortal(FakePortal::User::IsSilent);
        install();
        QTRY_VERIFY(m_portal->calls.contains(u"BindShortcuts"_s));
        m_tap->uninstall();
        m_tap->install();
        QTest::qWait(100);
        QVERIFY(!m_tap->isActive());
        QCOMPARE(m_portal->calls.count(u"BindShortcuts"_s), 1);
        m_portal.reset();
        QSignalSpy settled(m_tap.get(), &KeyTap::keysChanged);
        QTRY_VERIFY(!settled.isEmpty());
    }

    void nobodyGivesKeys()
    {
        install();
        QSignalSpy settled(m_tap.get(), &KeyTap::keysChanged);
        QTRY_VERIFY(!settled.isEmpty());
        QVERIFY(!m_tap->isActive() && !m_tap->canBeSetUp() && !m_tap->shortcuts());
        m_tap->setEscapeIntercepted(true);
        m_tap->uninstall();
    }

    void gnomesSettings()
    {
        if (gsettings({u"list-keys"_s, QString::fromLatin1(gnomeFolder).section(u'.', 0, 4)}).isEmpty())
            QSKIP("GNOME's settings are not installed");
        qputenv("XDG_CURRENT_DESKTOP", "ubuntu:GNOME");
        const QString theirs = QString::fromLatin1(gnomeFolder) + u"custom0/"_s;
        gsettings({u"set"_s, theirs, u"binding"_s, u"'<Alt><Primary>space'"_s});
        gsettings({u"set"_s, QString::fromLatin1(gnomeFolder).section(u'.', 0, 4), u"custom-keybindings"_s,
                   u"['%1']"_s.arg(theirs.section(u':', 1))});

        install();
        QTRY_VERIFY(m_tap->canBeSetUp());
        QVERIFY(!m_tap->isActive());
        m_tap->setUp();
        QTRY_VERIFY(m_tap->isActive());
        QCOMPARE(m_tap->shortcuts()->twice, u"правый Ctrl"_s);
        QCOMPARE(m_tap->shortcuts()->once, QString());
        QCOMPARE(m_tap->shortcuts()->taken, QStringList{u"Ctrl+Alt+Space"_s});
        const QString ours = QString::fromLatin1(gnomeFolder) + u"orvane-tap/"_s;
        QVERIFY(gsettings({u"get"_s, ours, u"command"_s}).contains(u" tap"_s));
        QCOMPARE(gsettings({u"get"_s, theirs, u"binding"_s}), u"'<Alt><Primary>space'"_s);

        // The next start finds them, moves them to another chosen key, and shows what the user makes of them.
        m_tap.reset();
        const QString toggle = QString::fromLatin1(gnomeFolder) + u"orvane-toggle/"_s;
        gsettings({u"set"_s, toggle, u"binding"_s, u"'Control_R'"_s});
        gsettings({u"set"_s, QString::fromLatin1(gnomeFolder).section(u'.', 0, 4), u"custom-keybindings"_s,
                   u"['%1', '%2']"_s.arg(ours.section(u':', 1), toggle.section(u':', 1))});
        install(TriggerKey::RightOption);
        QTRY_VERIFY(m_tap->isActive());
        QCOMPARE(gsettings({u"get"_s, ours, u"binding"_s}), u"'Alt_R'"_s);
        QCOMPARE(gsettings({u"get"_s, toggle, u"binding"_s}), u"'Control_R'"_s); // chosen by the user
        gsettings({u"set"_s, ours, u"binding"_s, u"'<Super>d'"_s});
        QTRY_COMPARE(m_tap->shortcuts()->twice, u"Super+D"_s);
    }

    void keysOfSwaysConfiguration_data()
    {
        const Rows<QString, QString, bool> row("config", "keys", "isBound");
        const QString toggle = u"Ctrl+Mod1+space"_s;
        row("other names, another order", u"  bindsym --locked Alt+Control+Space exec x"_s, toggle, true);
        row("a variable", u"set $mod Mod1\nset $c Ctrl\nbindsym $mod+$c+space exec x"_s, toggle, true);
        row("more keys", u"bindsym Ctrl+Mod1+Shift+space exec x"_s, toggle, false);
        row("a comment", u"# bindsym Ctrl+Mod1+space exec x"_s, toggle, false);
        row("of a mode", u"mode \"resize\" {\n  bindsym Escape mode default\n}"_s, u"Escape"_s, false);
        row("after a mode", u"mode \"m\" {\n}\nbindsym Escape kill"_s, u"Escape"_s, true);
        row("at the press", u"bindsym Control_R exec x"_s, u"--release Control_R"_s, false);
        row("at the release", u"bindsym --release Control_R exec x"_s, u"--release Control_R"_s, true);
    }

    void keysOfSwaysConfiguration()
    {
        QFETCH(const QString, config);
        QFETCH(const QString, keys);
        QTEST(SwayConfig(config).binds(keys), "isBound");
    }

private:
    void startPortal(FakePortal::User user)
    {
        m_portal = std::make_unique<FakePortal>();
        m_portal->user = user;
    }

    void install(TriggerKey trigger = TriggerKey::RightCommand)
    {
        WaylandKeyTap::Givers givers;
        givers.push_back(std::make_unique<GnomeShortcuts>());
        givers.push_back(std::make_unique<PortalShortcuts>(m_home->filePath(u"settings.json"_s)));
        m_tap = std::make_unique<WaylandKeyTap>(std::move(givers));
        m_tap->setTrigger(trigger);
        m_tap->install();
    }

    std::unique_ptr<QTemporaryDir> m_home;
    std::unique_ptr<FakePortal> m_portal;
    std::unique_ptr<WaylandKeyTap> m_tap;
};

int main(int argc, char **argv)
{
    const QTemporaryDir home;
    qputenv("XDG_CONFIG_HOME", home.path().toLocal8Bit());
    const SessionBus bus({u"ca.desrt.dconf"_s});
    qputenv("DBUS_SESSION_BUS_ADDRESS", bus.address().toLocal8Bit());
    const QCoreApplication application(argc, argv);
    TestDesktopKeys test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_desktopkeys.moc"
