#pragma once

#include <QCoroTask>

#include <stop_token>

namespace orvane {

/// Whether the program may record, before it tries: false when the user has refused it to the sandbox in
/// which it runs. Takes a second at most; true at once outside of a sandbox. The sound server can still
/// refuse: see CaptureError. Main thread.
[[nodiscard]] QCoro::Task<bool> requestMicrophone(std::stop_token stop = {});

} // namespace orvane
