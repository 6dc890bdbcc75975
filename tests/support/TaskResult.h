#pragma once

#include "base/Error.h"

#include <QTest>

#include <QCoroTask>

#include <exception>
#include <memory>
#include <optional>
#include <type_traits>
#include <variant>

namespace orvane {

/// What became of a task that a test started: wait with QTRY_VERIFY(result.isDone()), or begin
/// it with finished(). The task goes on when this object ends before it.
template <typename Value>
class TaskResult
{
public:
    explicit TaskResult(QCoro::Task<Value> task) { follow(std::move(task), m_state); }

    [[nodiscard]] bool isDone() const { return m_state->isDone; }
    [[nodiscard]] bool isCancelled() const { return failedAs<Cancelled>().has_value(); }
    [[nodiscard]] bool succeeded() const { return isDone() && !m_state->failure; }

    /// What it returned; for a task that succeeded.
    [[nodiscard]] const auto &value() const { return *m_state->value; }

    /// The description of what it threw, empty when nothing.
    [[nodiscard]] QString error() const
    {
        const std::optional<Error> error = failedAs<Error>();
        return error ? error->description() : QString();
    }

    /// What it threw, when that was an `Exception`.
    template <typename Exception>
    [[nodiscard]] std::optional<Exception> failedAs() const
    {
        try {
            if (m_state->failure)
                std::rethrow_exception(m_state->failure);
        } catch (const Exception &exception) {
            return exception;
        } catch (...) {
        }
        return std::nullopt;
    }

private:
    struct State
    {
        std::conditional_t<std::is_void_v<Value>, std::monostate, std::optional<Value>> value;
        std::exception_ptr failure;
        bool isDone = false;
    };

    static QCoro::Task<> follow(QCoro::Task<Value> task, std::shared_ptr<State> state)
    {
        try {
            if constexpr (std::is_void_v<Value>)
                co_await std::move(task);
            else
                state->value = co_await std::move(task);
        } catch (...) {
            state->failure = std::current_exception();
        }
        state->isDone = true;
    }

    std::shared_ptr<State> m_state = std::make_shared<State>();
};

template <typename Value>
TaskResult(QCoro::Task<Value>) -> TaskResult<Value>;

/// What became of a task, which is waited for. One that does not end ends the test program.
template <typename Value>
[[nodiscard]] TaskResult<Value> finished(QCoro::Task<Value> task)
{
    const TaskResult<Value> result(std::move(task));
    if (!QTest::qWaitFor([&result] { return result.isDone(); }, 300'000))
        qFatal("a task does not end");
    return result;
}

} // namespace orvane
