#include "engine/EngineTurns.h"

#include "base/Error.h"
#include "base/OneTimeEvent.h"
#include "base/localization/Localization.h"

namespace orvane {

QCoro::Task<EngineTurns::Turn> EngineTurns::wait(std::stop_token stop) const
{
    const Holds turns = m_turns; // this may go meanwhile
    throwIfCancelled(stop);
    while (turns.areTaken()) // also when another who waited was faster
        co_await turns.end()->wait(stop);
    co_return turns.take();
}

QString EngineTurns::waitText()
{
    return Localization::text(u"Дождитесь завершения текущей операции — движок выполняет их по одной");
}

} // namespace orvane
