#pragma once

#include <memory>

namespace orvane {

class OneTimeEvent;

/// Counts what is under way, for whoever has to wait until nothing is: the requests to a server that is to be
/// restarted, the writes without which the program must not end. Copies count together. Main thread.
class Holds
{
public:
    /// Counts as long as it lives, beyond the life of the Holds if need be.
    using Hold = std::shared_ptr<void>;

    Holds();

    [[nodiscard]] Hold take() const;
    [[nodiscard]] bool areTaken() const;
    /// Happens as soon as none is taken; has happened when none is.
    [[nodiscard]] std::shared_ptr<OneTimeEvent> end() const;

private:
    struct State;

    std::shared_ptr<State> m_state;
};

} // namespace orvane
