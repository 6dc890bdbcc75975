#include "app/AppDelegate.h"

#include "app/base/Async.h"

#include <QCoreApplication>

#include <utility>

namespace orvane {

namespace {

QCoro::Task<> endInOrder(MeetingTranscriber *meeting)
{
    co_await meeting->finishForQuit();
    QCoreApplication::quit();
}

} // namespace

AppDelegate::AppDelegate(AppServices &services, QObject *parent) : QObject(parent), m_services(services) {}

void AppDelegate::applicationDidFinishLaunching()
{
    m_services.engineProcesses().killStaleProcesses();
    m_services.history().watch();
    spawn(m_services.meeting().findLeftovers());
    if (UpdateChecker *updates = m_services.updates())
        updates->start();
    m_services.telemetry().pingIfEnabled();
}

void AppDelegate::terminate()
{
    if (!std::exchange(m_isTerminating, true))
        spawn(endInOrder(&m_services.meeting()));
}

void AppDelegate::applicationWillTerminate()
{
    m_services.engineProcesses().terminateAll();
}

} // namespace orvane
