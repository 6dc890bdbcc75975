#include "base/OneTimeEvent.h"

#include "base/Error.h"

#include <QCoreApplication>
#include <QTimer>

#include <coroutine>
#include <utility>

namespace orvane {

/// One coroutine that waits.
struct OneTimeEvent::Waiter
{
    std::coroutine_handle<> awaiting;

    /// A second wake before the first has resumed the coroutine must not resume it again.
    void wake()
    {
        if (const auto once = std::exchange(awaiting, nullptr))
            QMetaObject::invokeMethod(
                QCoreApplication::instance(), [once] { once.resume(); }, Qt::QueuedConnection);
    }
};

struct OneTimeEvent::Suspension
{
    std::shared_ptr<Waiter> waiter;

    [[nodiscard]] bool await_ready() const { return false; }
    void await_suspend(std::coroutine_handle<> awaiting) { waiter->awaiting = awaiting; }
    void await_resume() const {}
};

std::shared_ptr<OneTimeEvent> OneTimeEvent::create()
{
    return std::shared_ptr<OneTimeEvent>(new OneTimeEvent);
}

void OneTimeEvent::happen()
{
    if (std::exchange(m_hasHappened, true))
        return;
    for (const std::weak_ptr<Waiter> &waiting : std::exchange(m_waiters, {})) {
        if (const std::shared_ptr<Waiter> waiter = waiting.lock())
            waiter->wake();
    }
}

QCoro::Task<> OneTimeEvent::wait(std::stop_token stop)
{
    static_cast<void>(co_await waitFor(std::chrono::milliseconds::max(), std::move(stop)));
}

QCoro::Task<bool> OneTimeEvent::waitFor(std::chrono::milliseconds limit, std::stop_token stop)
{
    throwIfCancelled(stop);
    if (m_hasHappened)
        co_return true;
    const std::shared_ptr<OneTimeEvent> self = shared_from_this();
    const auto waiter = std::make_shared<Waiter>();
    std::erase_if(m_waiters, [](const std::weak_ptr<Waiter> &gone) { return gone.expired(); });
    m_waiters.emplace_back(waiter);
    const std::stop_callback onStop(stop, [waiter] { waiter->wake(); });
    QTimer timer;
    timer.setSingleShot(true);
    timer.callOnTimeout([waiter] { waiter->wake(); });
    if (limit < std::chrono::milliseconds::max())
        timer.start(limit);

    co_await Suspension{waiter};
    throwIfCancelled(stop);
    co_return self->m_hasHappened;
}

} // namespace orvane
