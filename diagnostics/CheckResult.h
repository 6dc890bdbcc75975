#pragma once

#include <QString>

namespace orvane {

/// What a check has found.
struct CheckResult
{
    enum class State {
        /// It could not be found out here, or is not used; nothing has to be mended.
        Unknown,
        Good,
        Bad,
    };

    State state = State::Unknown;
    /// One sentence in the interface language: what there is or, where it is bad, how to mend it here.
    QString text = {};

    bool operator==(const CheckResult &) const = default;
};

/// "unknown", "good" or "bad": what scripts and scenes know it by.
[[nodiscard]] QString nameOf(CheckResult::State state);

} // namespace orvane
