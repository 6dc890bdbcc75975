#pragma once

#include "app/base/Error.h"

#include <QCoreApplication>
#include <QThread>
#include <QThreadPool>

#include <QCoroTask>

#include <chrono>
#include <coroutine>
#include <memory>
#include <optional>
#include <stop_token>
#include <type_traits>
#include <utility>

namespace orvane {

/// Lets a task run that nobody awaits. What it throws ends here: a cancellation silently, anything
/// else as a warning on standard error, because a service should have published it.
void spawn(QCoro::Task<> task);

/// Resumes after the duration, never synchronously; throws Cancelled as soon as stop is requested.
/// Call and stop on the same thread.
[[nodiscard]] QCoro::Task<> sleepFor(std::chrono::milliseconds duration, std::stop_token stop = {});

namespace detail {

// Qt's own synchronisation is invisible to the thread sanitizer, so the two hand-overs of a job
// (to the pool and back) are told to it. Nothing in other builds.
void announceHandOver(void *job);
void acceptHandOver(void *job);

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
        announceHandOver(m_shared.get());
        m_pool->start([shared = m_shared, awaiting] {
            acceptHandOver(shared.get());
            shared->run();
            announceHandOver(shared.get());
            // The application object lives as long as the event loop that can resume us.
            QMetaObject::invokeMethod(
                QCoreApplication::instance(), [awaiting] { awaiting.resume(); }, Qt::QueuedConnection);
        });
    }

    Result await_resume()
    {
        acceptHandOver(m_shared.get());
        if (m_shared->failure)
            std::rethrow_exception(m_shared->failure);
        if constexpr (!std::is_void_v<Result>)
            // NOLINTNEXTLINE(bugprone-unchecked-optional-access): what did not fail has a result
            return std::move(*m_shared->result);
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

template <typename Work>
[[nodiscard]] auto offMainThread(Work work) -> QCoro::Task<std::invoke_result_t<Work>>
{
    return offMainThread(QThreadPool::globalInstance(), std::move(work));
}

} // namespace orvane
