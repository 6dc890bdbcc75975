#pragma once

#include <QString>

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

    static inline const QString busName = QStringLiteral("com.orvane.Orvane");

    [[nodiscard]] static Claim claim();
};

} // namespace orvane
