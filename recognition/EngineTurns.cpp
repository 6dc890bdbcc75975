#include "recognition/EngineTurns.h"

#include "app/base/Error.h"
#include "app/base/OneTimeEvent.h"
#include "app/settings/Localization.h"

#include <QCoroSignal>

using namespace Qt::StringLiterals;

namespace orvane {

struct EngineTurns::State
{
    std::weak_ptr<void> taken;
    std::shared_ptr<OneTimeEvent> ended = OneTimeEvent::create();
};

std::shared_ptr<EngineTurns::State> EngineTurns::createState()
{
    return std::make_shared<State>();
}

EngineTurns::Turn EngineTurns::take(const std::shared_ptr<State> &state)
{
    if (!state->taken.expired())
        return nullptr;
    Turn turn(state.get(), [state](void *) { Q_EMIT state->ended->happened(); });
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
    const std::stop_callback wake(stop, [ended = state->ended] { Q_EMIT ended->happened(); });
    while (true) {
        if (Turn turn = take(state))
            co_return turn;
        co_await qCoro(state->ended.get(), &OneTimeEvent::happened);
        throwIfCancelled(stop);
    }
}

bool EngineTurns::isTaken() const
{
    return !m_state->taken.expired();
}

QString EngineTurns::waitText()
{
    return Localization::text(u"Дождитесь завершения текущей операции — движок выполняет их по одной"_s);
}

} // namespace orvane
