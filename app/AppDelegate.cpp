#include "app/AppDelegate.h"

namespace orvane {

AppDelegate::AppDelegate(AppServices &services, QObject *parent) : QObject(parent), m_services(services) {}

void AppDelegate::applicationDidFinishLaunching()
{
    m_services.engineProcesses().killStaleProcesses();
    m_services.history().watch();
}

void AppDelegate::applicationWillTerminate()
{
    m_services.engineProcesses().terminateAll();
}

} // namespace orvane
