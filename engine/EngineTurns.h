#pragma once

#include <QString>

#include <QCoroTask>

#include <memory>
#include <stop_token>

namespace orvane {

/// Lets one heavy operation use the engine at a time: a file, a meeting or a recording that is transcribed
/// anew. Shared by all that do these; a dictation asks for no turn. Main thread.
class EngineTurns
{
public:
    /// Held by an operation while it runs, beyond the life of the EngineTurns if need be.
    using Turn = std::shared_ptr<void>;

    /// Null while another operation runs.
    [[nodiscard]] Turn take() const;
    /// Waits for its turn. Throws Cancelled when stop is requested meanwhile.
    [[nodiscard]] QCoro::Task<Turn> wait(std::stop_token stop) const;

    [[nodiscard]] bool isTaken() const;

    /// What the user is told while another operation runs.
    [[nodiscard]] static QString waitText();

private:
    struct State;
    struct Holder;

    [[nodiscard]] static Turn take(const std::shared_ptr<State> &state);
    [[nodiscard]] static std::shared_ptr<State> createState();

    const std::shared_ptr<State> m_state = createState();
};

} // namespace orvane
