#pragma once

#include <deque>
#include <stop_token>

namespace orvane {

/// A token that is stopped as soon as any of several is, such as a service's own life and the operation's
/// cancellation. Lives in the coroutine that passes the token on.
class AnyStop
{
public:
    template <typename... Tokens>
    explicit AnyStop(const Tokens &...tokens)
    {
        (m_callbacks.emplace_back(tokens, Request{m_source}), ...);
    }
    AnyStop(const AnyStop &) = delete;
    AnyStop &operator=(const AnyStop &) = delete;

    [[nodiscard]] std::stop_token token() const { return m_source.get_token(); }

private:
    struct Request
    {
        std::stop_source source;
        void operator()() const
        {
            std::stop_source kept = source; // this object may be destroyed by whom it resumes
            kept.request_stop();
        }
    };

    std::stop_source m_source;
    std::deque<std::stop_callback<Request>> m_callbacks; // they cannot be moved
};

} // namespace orvane
