#pragma once

#include <QIcon>

/// The program's picture in the tray: a microphone, legible on light and dark panels.
namespace orvane::TrayIcon {

enum class Look {
    Ready,
    /// The microphone is on.
    Recording,
    /// A model is working.
    Busy,
};

[[nodiscard]] QIcon icon(Look look);

} // namespace orvane::TrayIcon
