#include "app/AppDelegate.h"

namespace orvane {

AppDelegate::AppDelegate(AppServices &services, QObject *parent) : QObject(parent), m_services(services) {}

void AppDelegate::applicationDidFinishLaunching()
{
    m_services.engineProcesses().killStaleProcesses();
    m_services.history().watch();
    if (UpdateChecker *updates = m_services.updates())
        updates->start();
    m_services.telemetry().pingIfEnabled();
}

void AppDelegate::applicationWillTerminate()
{
    m_services.engineProcesses().terminateAll();
}

} // namespace orvane
