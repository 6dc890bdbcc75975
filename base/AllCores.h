#pragma once

#include <cstddef>
#include <functional>

namespace orvane {

/// Calls `work` on this thread and on as many others as the machine has cores and `items` are worth: one for
/// every `itemsPerThread`. Each call takes its share of the items itself and must not throw. Returns when
/// all have ended.
void runOnAllCores(size_t items, size_t itemsPerThread, const std::function<void()> &work);

} // namespace orvane
