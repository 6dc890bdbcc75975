#pragma once

namespace orvane {

/// Makes sure that one application runs in a session, through its name on the session bus. The name is
/// given up when the process ends, however it ends.
class SingleInstance
{
public:
    enum class Claim {
        /// The name is ours, or there is no bus that could tell of another.
        First,
        AnotherRuns,
    };

    [[nodiscard]] static Claim claim();
};

} // namespace orvane
