#pragma once

#include <chrono>

/// When a request to end the program is honoured.
namespace orvane::Termination {

enum class Source {
    /// A person chose it: the menu, the keyboard, our bus interface.
    User,
    /// The session manager; nobody needs to be behind it.
    Session,
};

/// Sessions ask programs to end while they are still being restored; such requests are not meant.
inline constexpr std::chrono::seconds startPhase{6};

[[nodiscard]] constexpr bool isHonoured(Source source, std::chrono::nanoseconds sinceLaunch)
{
    return source == Source::User || sinceLaunch >= startPhase;
}

} // namespace orvane::Termination
