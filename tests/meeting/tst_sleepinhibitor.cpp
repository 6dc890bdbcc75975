#include "meeting/SleepInhibitor.h"

#include <QDBusConnection>
#include <QDBusUnixFileDescriptor>
#include <QProcess>
#include <QTest>

#include <array>
#include <fcntl.h>
#include <memory>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace orvane;

/// The part of the login manager that hands out locks, on a bus of the test's own.
class LoginManager : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.login1.Manager")

public:
    ~LoginManager() override { ::close(m_ends[0]); }

    [[nodiscard]] QStringList asked() const { return m_asked; }
    /// Whether whoever got the lock still holds it.
    [[nodiscard]] bool isHeld() const
    {
        char byte = 0;
        return m_ends[0] >= 0 && ::read(m_ends[0], &byte, 1) < 0; // the end of the pipe once it is closed
    }

public Q_SLOTS:
    QDBusUnixFileDescriptor Inhibit(const QString &what, const QString &who, const QString &why, // NOLINT
                                    const QString &mode)
    {
        m_asked = {what, who, why, mode};
        if (::pipe2(m_ends.data(), O_CLOEXEC | O_NONBLOCK) != 0)
            qFatal("no pipe");
        const QDBusUnixFileDescriptor lock(m_ends[1]); // a copy
        ::close(m_ends[1]);
        return lock;
    }

private:
    std::array<int, 2> m_ends = {-1, -1};
    QStringList m_asked;
};

class TestSleepInhibitor : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();

    void keepsAwakeWhileItLives();

private:
    QProcess m_bus;
};

void TestSleepInhibitor::initTestCase()
{
    m_bus.start(u"dbus-daemon"_s, {u"--session"_s, u"--nofork"_s, u"--print-address"_s});
    QVERIFY(m_bus.waitForReadyRead());
    qputenv("DBUS_SYSTEM_BUS_ADDRESS", m_bus.readLine().trimmed());
    QVERIFY(QDBusConnection::systemBus().registerService(u"org.freedesktop.login1"_s));
}

void TestSleepInhibitor::cleanupTestCase()
{
    m_bus.terminate();
    QVERIFY(m_bus.waitForFinished());
}

void TestSleepInhibitor::keepsAwakeWhileItLives()
{
    LoginManager manager;
    QDBusConnection::systemBus().registerObject(u"/org/freedesktop/login1"_s, &manager,
                                                QDBusConnection::ExportAllSlots);
    auto inhibitor = std::make_unique<SleepInhibitor>(u"a meeting"_s);
    QTRY_COMPARE(manager.asked(), (QStringList{u"sleep:idle"_s, u"Orvane"_s, u"a meeting"_s, u"block"_s}));
    QTest::qWait(50); // for the answer to arrive
    QVERIFY(manager.isHeld());
    inhibitor.reset();
    QTRY_VERIFY(!manager.isHeld());
}

QTEST_GUILESS_MAIN(TestSleepInhibitor)
#include "tst_sleepinhibitor.moc"
