#include "desktop/wayland/WaylandThread.h"

#include "base/Async.h"
#include "base/OneTimeEvent.h"

#include <QCoreApplication>

#include <csignal>
#include <memory>
#include <utility>

namespace orvane {

using detail::HandedOver;

namespace {

/// A program that goes while it reads raises a signal that would end this one.
void ignoreBrokenPipes()
{
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGPIPE);
    ::pthread_sigmask(SIG_BLOCK, &signals, nullptr);
}

} // namespace

WaylandThread::WaylandThread() : m_paster(new WaylandPaster)
{
    m_paster->moveToThread(&m_thread);
    QObject::connect(&m_thread, &QThread::finished, m_paster, &QObject::deleteLater);
    m_thread.setObjectName("wayland");
    m_thread.start();
    QMetaObject::invokeMethod(m_paster, HandedOver([paster = m_paster] {
                                  ignoreBrokenPipes();
                                  paster->prepare();
                              }));
}

WaylandThread::~WaylandThread()
{
    // After what is waiting there.
    QMetaObject::invokeMethod(m_paster, HandedOver([thread = &m_thread] { thread->quit(); }));
    m_thread.wait();
}

QCoro::Task<bool> WaylandThread::run(std::function<bool(WaylandPaster &)> work)
{
    const std::shared_ptr<OneTimeEvent> done = OneTimeEvent::create();
    const auto result = std::make_shared<bool>(false);
    QMetaObject::invokeMethod(m_paster, HandedOver([paster = m_paster, work = std::move(work), done, result] {
                                  *result = work(*paster);
                                  QMetaObject::invokeMethod(QCoreApplication::instance(),
                                                            HandedOver([done] { done->happen(); }),
                                                            Qt::QueuedConnection);
                              }),
                              Qt::QueuedConnection);
    co_await done->wait();
    co_return *result;
}

} // namespace orvane
