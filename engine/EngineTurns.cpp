#include "engine/EngineTurns.h"

#include "base/Error.h"
#include "base/OneTimeEvent.h"
#include "base/localization/Localization.h"

#include <utility>

namespace orvane {

struct EngineTurns::State
{
    std::weak_ptr<void> taken;
    /// The end of the turn that is taken, once somebody waits for it.
    std::shared_ptr<OneTimeEvent> ended;
};

/// What a turn is made of.
struct EngineTurns::Holder
{
    const std::shared_ptr<State> state;

    explicit Holder(std::shared_ptr<State> ofTurns) : state(std::move(ofTurns)) {}
    Q_DISABLE_COPY_MOVE(Holder)
    ~Holder()
    {
        if (const std::shared_ptr<OneTimeEvent> ended = std::exchange(state->ended, nullptr))
            ended->happen();
    }
};

std::shared_ptr<EngineTurns::State> EngineTurns::createState()
{
    return std::make_shared<State>();
}

EngineTurns::Turn EngineTurns::take(const std::shared_ptr<State> &state)
{
    if (!state->taken.expired())
        return nullptr;
    Turn turn = std::make_shared<Holder>(state);
    state->taken = turn;
    return turn;
}

EngineTurns::Turn EngineTurns::take() const
{
    return take(m_state);
}

QCoro::Task<EngineTurns::Turn> EngineTurns::wait(std::stop_token stop) const
{
    const std::shared_ptr<State> state = m_state;
    throwIfCancelled(stop);
    while (true) {
        if (Turn turn = take(state))
            co_return turn;
        if (!state->ended)
            state->ended = OneTimeEvent::create();
        const std::shared_ptr<OneTimeEvent> ended = state->ended;
        co_await ended->wait(stop);
    }
}

bool EngineTurns::isTaken() const
{
    return !m_state->taken.expired();
}

QString EngineTurns::waitText()
{
    return Localization::text(u"Дождитесь завершения текущей операции — движок выполняет их по одной");
}

} // namespace orvane
