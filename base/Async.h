#pragma once

#include "base/Error.h"

#include <QCoreApplication>
#include <QThread>
#include <QThreadPool>

#include <QCoroTask>

#include <chrono>
#include <coroutine>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <stop_token>
#include <type_traits>
#include <utility>

namespace orvane {

/// Lets a task run that nobody awaits. What it throws ends here: a cancellation silently, anything
/// else as a warning on standard error, because a service should have published it.
void spawn(QCoro::Task<> task);

/// The same for a task whose failure is published by who runs it, such as an Operation.
template <typename Result>
void spawnPublished(QCoro::Task<Result> task)
{
    spawn([](QCoro::Task<Result> published) -> QCoro::Task<> {
        try {
            co_await std::move(published);
        } catch (const Error &) {
            // the user sees it
        }
    }(std::move(task)));
}

/// Resumes after the duration, never synchronously; throws Cancelled as soon as stop is requested.
/// Call and stop on the same thread.
[[nodiscard]] QCoro::Task<> sleepFor(std::chrono::milliseconds duration, std::stop_token stop = {});

/// For work of more than a second, such as decoding an hour of sound: on a machine with one or two cores it
/// would keep the small jobs of the global pool waiting, and with them a dictation.
[[nodiscard]] QThreadPool &longWorkPool();

/// Runs `work` on a pool thread; nobody waits for it but the program's end. It must not throw.
void startOffMainThread(std::function<void()> work);
/// The same on a thread of `pool`. Any thread.
void startOffMainThread(QThreadPool *pool, std::function<void()> work);

/// Waits for every job given to the pool so far, and for what they have left in memory.
void waitForDone(QThreadPool &pool);

/// For the end of the program, when the services are gone and the application object is not: lets the
/// jobs of the pools end and resumes the tasks that wait for something, which find their service
/// gone and end too. Waits for those that wait for an engine to end, which takes a moment and never more
/// than 3 s.
void endAbandonedTasks();

namespace detail {

// Qt's own synchronisation is invisible to the thread sanitizer, so what passes from one thread to
// another is told to it: all that was done before an announcement is seen after the next acceptance.
// Nothing in other builds.
void announceHandOver();
void acceptHandOver();

/// A function on its way to another thread, which copies it to where that thread finds it.
template <typename Function>
class HandedOver
{
public:
    explicit HandedOver(Function function) : m_function(std::move(function)) {}
    HandedOver(const HandedOver &other) : m_function(other.m_function) { announceHandOver(); }
    HandedOver &operator=(const HandedOver &) = delete;
    ~HandedOver() { acceptHandOver(); } // either thread may be the last to let go of it

    void operator()()
    {
        acceptHandOver();
        Function function = m_function;
        announceHandOver();
        function();
        announceHandOver(); // what it did, to who waits for its thread
    }

private:
    Function m_function;
};

/// Awaits a function that runs on a pool thread. Awaited on the main thread only, where it resumes.
template <typename Result>
class PoolJob
{
public:
    PoolJob(QThreadPool *pool, std::function<Result()> work)
        : m_shared(std::make_shared<Shared>()),
          m_pool(pool)
    {
        m_shared->work = std::move(work);
    }

    [[nodiscard]] bool await_ready() const noexcept { return false; }

    void await_suspend(std::coroutine_handle<> awaiting)
    {
        Q_ASSERT(QThread::currentThread() == QCoreApplication::instance()->thread());
        m_pool->start(std::function<void()>(HandedOver([shared = m_shared, awaiting] {
            shared->run();
            // The application object lives as long as the event loop that can resume us.
            QMetaObject::invokeMethod(QCoreApplication::instance(),
                                      HandedOver([awaiting] { awaiting.resume(); }), Qt::QueuedConnection);
        })));
    }

    Result await_resume()
    {
        if (m_shared->failure)
            std::rethrow_exception(std::exchange(m_shared->failure, nullptr)); // the worker may outlive us
        if constexpr (!std::is_void_v<Result>)
            // NOLINTNEXTLINE(bugprone-unchecked-optional-access): what did not fail has a result
            return std::move(m_shared->result).value();
    }

private:
    struct Shared
    {
        std::function<Result()> work;
        std::optional<std::conditional_t<std::is_void_v<Result>, std::monostate, Result>> result;
        std::exception_ptr failure;

        void run()
        {
            try {
                if constexpr (std::is_void_v<Result>)
                    work();
                else
                    result = work();
            } catch (...) {
                failure = std::current_exception();
            }
            work = nullptr; // what the work captured is freed here, not with the frame
        }
    };

    std::shared_ptr<Shared> m_shared;
    QThreadPool *m_pool;
};

} // namespace detail

/// Runs `work` on a thread of `pool` and resumes the awaiting coroutine on the main thread with its
/// result, or with what it threw. The work always runs to its end: let it watch a std::stop_token
/// if it is long. Await on the main thread only.
template <typename Work>
[[nodiscard]] auto offMainThread(QThreadPool *pool, Work work) -> QCoro::Task<std::invoke_result_t<Work>>
{
    co_return co_await detail::PoolJob<std::invoke_result_t<Work>>(pool, std::move(work));
}

/// The same on a thread of the global pool, for work of a moment.
template <typename Work>
[[nodiscard]] auto offMainThread(Work work) -> QCoro::Task<std::invoke_result_t<Work>>
{
    return offMainThread(QThreadPool::globalInstance(), std::move(work));
}

} // namespace orvane
