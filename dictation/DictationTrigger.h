#pragma once

#include "settings/StoredChoices.h"

#include <chrono>
#include <functional>
#include <optional>

namespace orvane {

/// Tells when the trigger key was pressed twice in quick succession.
class DictationTrigger
{
public:
    /// Monotonic time since any fixed moment.
    using Clock = std::function<std::chrono::nanoseconds()>;

    /// Two presses as far apart as this, or farther, are no double press.
    static constexpr std::chrono::milliseconds limit{400};

    explicit DictationTrigger(Clock clock);

    /// Takes what the key tap reports, whichever key it is; `trigger` is the one that counts now. True when
    /// this completes a double press; the next press then is the first of a new pair.
    bool keyChanged(TriggerKey trigger, TriggerKey key, bool down);

    /// The next press is a first one.
    void reset() { m_firstPress.reset(); }

private:
    Clock m_clock;
    /// The last press without its second.
    std::optional<std::chrono::nanoseconds> m_firstPress;
};

} // namespace orvane
