#include "base/Async.h"

#include "base/OneTimeEvent.h"

#include <QDeadlineTimer>
#include <QScopeGuard>
#include <QTimer>

#if defined(__has_feature)
#if __has_feature(thread_sanitizer)
#include <sanitizer/tsan_interface.h>
#define ORVANE_THREAD_SANITIZER
#endif
#endif

using namespace std::chrono_literals;

namespace orvane {

namespace {

/// Longer than an engine is given to end.
constexpr auto longestEnd = 3s;
/// How often the loop looks whether all has ended, when nothing else wakes it.
constexpr auto lookInterval = 10ms;

/// The tasks that nobody awaits and that have not ended. Main thread.
int abandonedTasks = 0;

QCoro::Task<> catchAll(QCoro::Task<> task)
{
    ++abandonedTasks;
    const auto end = qScopeGuard([] { --abandonedTasks; });
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
    static_cast<void>(co_await OneTimeEvent::create()->waitFor(duration, std::move(stop)));
}

QThreadPool &longWorkPool()
{
    static QThreadPool pool;
    return pool;
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
    waitForDone(longWorkPool());
    QCoreApplication::processEvents();
    QTimer look;
    look.start(lookInterval);
    for (const QDeadlineTimer deadline(longestEnd); abandonedTasks > 0 && !deadline.hasExpired();)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
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
