#pragma once

#include "base/Holds.h"

#include <QString>

#include <QCoroTask>

#include <stop_token>

namespace orvane {

/// Lets one heavy operation use the engine at a time: a file, a meeting or a recording that is transcribed
/// anew. Shared by all that do these; a dictation asks for no turn. Main thread.
class EngineTurns
{
public:
    /// Held by an operation while it runs, beyond the life of the EngineTurns if need be.
    using Turn = Holds::Hold;

    /// Null while another operation runs.
    [[nodiscard]] Turn take() const { return isTaken() ? nullptr : m_turns.take(); }
    /// Waits for its turn. Throws Cancelled when stop is requested meanwhile.
    [[nodiscard]] QCoro::Task<Turn> wait(std::stop_token stop) const;

    [[nodiscard]] bool isTaken() const { return m_turns.areTaken(); }

    /// What the user reads while another operation runs.
    [[nodiscard]] static QString waitText();

private:
    const Holds m_turns;
};

} // namespace orvane
