#pragma once

namespace orvane {

/// Whether what is transparent in a window shows what lies under it. May change at any time.
[[nodiscard]] bool windowsAreBlended();

} // namespace orvane
