#pragma once

#include <QCoroTask>

#include <functional>

/// Keys that the desktop's portal for remote control lets this program press, once the user has allowed it. A
/// session is open only while it pastes, as desktops show a sign for that. Main thread.
namespace orvane::RemoteDesktopPaste {

/// Whether the user has allowed it, as far as is known here.
[[nodiscard]] bool isAllowed();

/// Lets the desktop ask the user. Returns when that is allowed and kept; else throws one sentence.
[[nodiscard]] QCoro::Task<> askConsent();

/// Presses Shift+Insert, right after that call; false when it is not allowed, or no longer, or cannot be done
/// at once. Lets nobody be asked.
[[nodiscard]] QCoro::Task<bool> press(std::function<void()> aboutToPress = [] {});

} // namespace orvane::RemoteDesktopPaste
