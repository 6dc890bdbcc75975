#include "app/SingleInstance.h"

#include <QDBusConnection>

namespace orvane {

SingleInstance::Claim SingleInstance::claim()
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return Claim::First;
    return bus.registerService(busName) ? Claim::First : Claim::AnotherRuns;
}

} // namespace orvane
