#pragma once

#include "base/Error.h"

#include <QCoroTask>

#include <concepts>
#include <stop_token>
#include <type_traits>
#include <utility>

namespace orvane {

/// The object whose coroutine runs is gone: nothing of it may be touched.
class Gone : public Cancelled
{};

/// The life of an object, for its coroutines: they await everything through its scope,
/// `co_await m_scope(task)`, and go on only while the object is there. A member of that object, ended
/// first in its destructor. Main thread.
class Scope
{
public:
    Scope() = default;
    ~Scope() { end(); }
    Scope(const Scope &) = delete;
    Scope &operator=(const Scope &) = delete;

    /// The object is about to go: who awaits through this will get Gone.
    void end() { m_source.request_stop(); }

    /// Stopped when the object goes, for what has to know at once.
    [[nodiscard]] std::stop_token stop() const { return m_source.get_token(); }

    /// Ends with what the task ends with; with Gone if the object has gone by then, whatever came of the
    /// task; with Cancelled if one of the tokens was stopped by then.
    template <typename Result, std::same_as<std::stop_token>... Tokens>
    [[nodiscard]] QCoro::Task<Result> operator()(QCoro::Task<Result> task, Tokens... tokens) const
    {
        return guarded(std::move(task), stop(), std::move(tokens)...);
    }

private:
    template <typename Result, typename... Tokens>
    static QCoro::Task<Result> guarded(QCoro::Task<Result> task, std::stop_token gone, Tokens... tokens)
    {
        const auto check = [&] {
            if (gone.stop_requested())
                throw Gone();
            (throwIfCancelled(tokens), ...);
        };
        try {
            if constexpr (std::is_void_v<Result>) {
                co_await std::move(task);
                check();
            } else {
                Result result = co_await std::move(task);
                check();
                co_return result;
            }
        } catch (const Gone &) {
            check();
            throw Cancelled(); // another object, on which this one depended
        } catch (...) {
            check();
            throw;
        }
    }

    std::stop_source m_source;
};

} // namespace orvane
