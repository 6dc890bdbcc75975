#include "base/Holds.h"

#include "base/OneTimeEvent.h"

namespace orvane {

struct Holds::State
{
    int count = 0;
    std::shared_ptr<OneTimeEvent> end = OneTimeEvent::create();
};

Holds::Holds() : m_state(std::make_shared<State>())
{
    m_state->end->happen();
}

Holds::Hold Holds::take() const
{
    if (m_state->count++ == 0)
        m_state->end = OneTimeEvent::create();
    return {m_state.get(), [state = m_state](void *) {
                if (--state->count == 0)
                    state->end->happen();
            }};
}

bool Holds::areTaken() const
{
    return m_state->count > 0;
}

std::shared_ptr<OneTimeEvent> Holds::end() const
{
    return m_state->end;
}

} // namespace orvane
