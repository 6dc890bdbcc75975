#pragma once

#include <QCoroTask>

#include <chrono>
#include <memory>
#include <stop_token>
#include <vector>

namespace orvane {

/// Something that coroutines wait for, shared by them and by whoever makes it happen. It happens once;
/// whatever wakes a waiting coroutine first (the event, its time limit, its stop), it is resumed once,
/// from the event loop, even when who woke it is gone by then. Main thread.
class OneTimeEvent : public std::enable_shared_from_this<OneTimeEvent>
{
public:
    [[nodiscard]] static std::shared_ptr<OneTimeEvent> create();

    /// The first call wakes all who wait; later ones do nothing.
    void happen();
    [[nodiscard]] bool hasHappened() const { return m_hasHappened; }

    /// Returns when it has happened, at once when it has already. Throws Cancelled when stop is
    /// requested first.
    [[nodiscard]] QCoro::Task<> wait(std::stop_token stop = {});
    /// The same with a limit: whether it happened in that time.
    [[nodiscard]] QCoro::Task<bool> waitFor(std::chrono::milliseconds limit, std::stop_token stop = {});

private:
    struct Waiter;
    struct Suspension;

    OneTimeEvent() = default;

    bool m_hasHappened = false;
    std::vector<std::weak_ptr<Waiter>> m_waiters;
};

} // namespace orvane
