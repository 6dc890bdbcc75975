#include "meeting/SleepInhibitor.h"
#include "tests/support/SessionBus.h"

#include <QDBusConnection>
#include <QDBusUnixFileDescriptor>
#include <QTest>

#include <array>
#include <fcntl.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace orvane;

/// The part of the login manager that hands out locks.
class LoginManager : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.login1.Manager")

public:
    QStringList asked;

    ~LoginManager() override { ::close(m_ends[0]); }

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
        asked = {what, who, why, mode};
        if (::pipe2(m_ends.data(), O_CLOEXEC | O_NONBLOCK) != 0)
            qFatal("no pipe");
        const QDBusUnixFileDescriptor lock(m_ends[1]); // a copy
        ::close(m_ends[1]);
        return lock;
    }

private:
    std::array<int, 2> m_ends = {-1, -1};
};

class TestSleepInhibitor : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void keepsAwakeWhileItLives()
    {
        const test::SessionBus bus;
        qputenv("DBUS_SYSTEM_BUS_ADDRESS", bus.address().toUtf8());
        LoginManager manager;
        QDBusConnection system = QDBusConnection::systemBus();
        QVERIFY(system.registerService(u"org.freedesktop.login1"_s));
        system.registerObject(u"/org/freedesktop/login1"_s, &manager, QDBusConnection::ExportAllSlots);
        {
            const SleepInhibitor inhibitor(u"a meeting"_s);
            QTRY_COMPARE(manager.asked,
                         (QStringList{u"sleep:idle"_s, u"Orvane"_s, u"a meeting"_s, u"block"_s}));
            QTest::qWait(50); // for the answer to arrive
            QVERIFY(manager.isHeld());
        }
        QTRY_VERIFY(!manager.isHeld());
    }
};

QTEST_GUILESS_MAIN(TestSleepInhibitor)
#include "tst_sleepinhibitor.moc"
