#pragma once

#include <stop_token>

namespace orvane {

/// A token that is stopped as soon as one of two is: a service's own life and the operation's
/// cancellation. Lives in the coroutine that passes the token on.
class EitherStop
{
public:
    EitherStop(const std::stop_token &first, const std::stop_token &second)
        : m_first(first, Request{m_source}),
          m_second(second, Request{m_source})
    {}

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
    std::stop_callback<Request> m_first;
    std::stop_callback<Request> m_second;
};

} // namespace orvane
