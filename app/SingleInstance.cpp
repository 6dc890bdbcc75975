#include "app/SingleInstance.h"

#include "app/control/ControlInterface.h"

#include <QDBusConnection>

namespace orvane {

SingleInstance::Claim SingleInstance::claim()
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return Claim::First;
    return bus.registerService(ControlInterface::service) ? Claim::First : Claim::AnotherRuns;
}

} // namespace orvane
