#pragma once

namespace orvane {

/// Whether there is a display to show windows on.
[[nodiscard]] bool hasDisplay();

} // namespace orvane
