#include "dictation/Battery.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QVariantMap>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

constexpr double lowPercentage = 20;
constexpr uint discharging = 2; // of UPower's states

/// All batteries of the machine as UPower sums them up.
class UPowerBattery final : public Battery
{
public:
    void look() override
    {
        QDBusMessage request = QDBusMessage::createMethodCall(
            u"org.freedesktop.UPower"_s, u"/org/freedesktop/UPower/devices/DisplayDevice"_s,
            u"org.freedesktop.DBus.Properties"_s, u"GetAll"_s);
        request << u"org.freedesktop.UPower.Device"_s;
        m_request =
            std::make_unique<QDBusPendingCallWatcher>(QDBusConnection::systemBus().asyncCall(request));
        QObject::connect(m_request.get(), &QDBusPendingCallWatcher::finished, m_request.get(), [this] {
            const QDBusPendingReply<QVariantMap> reply = *m_request;
            const QVariantMap battery = reply.isError() ? QVariantMap() : reply.value();
            m_isLow = battery.value(u"State"_s).toUInt() == discharging &&
                      battery.value(u"Percentage"_s).toDouble() < lowPercentage;
        });
    }

    [[nodiscard]] bool isLow() const override { return m_isLow; }

private:
    std::unique_ptr<QDBusPendingCallWatcher> m_request;
    bool m_isLow = false;
};

} // namespace

std::unique_ptr<Battery> Battery::ofThisMachine()
{
    return std::make_unique<UPowerBattery>();
}

} // namespace orvane
