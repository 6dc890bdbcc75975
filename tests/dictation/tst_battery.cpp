#include "dictation/Battery.h"
#include "tests/support/Rows.h"
#include "tests/support/SessionBus.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>

using namespace Qt::StringLiterals;
using namespace orvane;
using namespace orvane::test;

namespace {

/// The part of UPower that sums the batteries up.
class PowerService : public QDBusVirtualObject
{
public:
    QVariantMap battery;
    int asked = 0;

    [[nodiscard]] QString introspect(const QString & /*path*/) const override { return {}; }
    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override
    {
        if (message.member() != u"GetAll" ||
            message.arguments() != QVariantList{u"org.freedesktop.UPower.Device"_s})
            return false;
        ++asked;
        return connection.send(message.createReply(battery));
    }
};

} // namespace

class TestBattery : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { qputenv("DBUS_SYSTEM_BUS_ADDRESS", m_bus.address().toUtf8()); }

    void isNotLowWhereNobodySays()
    {
        const auto battery = Battery::ofThisMachine();
        battery->look();
        QTest::qWait(100);
        QVERIFY(!battery->isLow());
    }

    void isLow()
    {
        QDBusConnection system = QDBusConnection::systemBus();
        PowerService service;
        QVERIFY(system.registerService(u"org.freedesktop.UPower"_s));
        QVERIFY(system.registerVirtualObject(u"/org/freedesktop/UPower/devices/DisplayDevice"_s, &service));

        const auto battery = Battery::ofThisMachine();
        constexpr uint charging = 1;
        constexpr uint discharging = 2;
        const auto isLow = [&](uint state, double percentage) {
            service.battery = {{u"State"_s, state}, {u"Percentage"_s, percentage}};
            const int before = service.asked;
            battery->look();
            (void)QTest::qWaitFor([&] { return service.asked > before; });
            QTest::qWait(50); // for the answer to arrive
            return battery->isLow();
        };
        QVERIFY(isLow(discharging, 19));
        QVERIFY(!isLow(discharging, 20));
        QVERIFY(!isLow(charging, 5));
        QVERIFY(isLow(discharging, 5));
    }

private:
    const SessionBus m_bus;
};

QTEST_GUILESS_MAIN(TestBattery)
#include "tst_battery.moc"
