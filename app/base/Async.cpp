#include "app/base/Async.h"

#include <QTimer>

#include <QCoroTimer>

#if defined(__has_feature)
#if __has_feature(thread_sanitizer)
#include <sanitizer/tsan_interface.h>
#define ORVANE_THREAD_SANITIZER
#endif
#endif

namespace orvane {

namespace {

QCoro::Task<> catchAll(QCoro::Task<> task)
{
    try {
        co_await std::move(task);
    } catch (const Cancelled &) {
        // Whoever cancelled knows.
    } catch (const std::exception &error) {
        qWarning("%s", error.what());
    }
}

} // namespace

void spawn(QCoro::Task<> task)
{
    catchAll(std::move(task));
}

QCoro::Task<> sleepFor(std::chrono::milliseconds duration, std::stop_token stop)
{
    QTimer timer;
    timer.setSingleShot(true);
    timer.start(duration);
    const std::stop_callback wake(stop, [&timer] { timer.start(0); });
    co_await timer;
    throwIfCancelled(stop);
}

void startOffMainThread(std::function<void()> work)
{
    startOffMainThread(QThreadPool::globalInstance(), std::move(work));
}

void startOffMainThread(QThreadPool *pool, std::function<void()> work)
{
    pool->start(std::function<void()>(detail::HandedOver(std::move(work))));
}

void waitForDone(QThreadPool &pool)
{
    pool.waitForDone();
    detail::acceptHandOver();
}

void endAbandonedTasks()
{
    waitForDone(*QThreadPool::globalInstance());
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

namespace detail {

#ifdef ORVANE_THREAD_SANITIZER
namespace {
char handOvers; // its address stands for all of them
}

void announceHandOver()
{
    __tsan_release(&handOvers);
}

void acceptHandOver()
{
    __tsan_acquire(&handOvers);
}
#else
void announceHandOver() {}

void acceptHandOver() {}
#endif

} // namespace detail

} // namespace orvane
