#pragma once

#include <QUrl>

using CURL = void;

namespace orvane::SystemProxy {

/// Has the transfer go through what the desktop or the environment gives as proxy for the address.
/// May take a moment: not on the main thread.
void apply(CURL *handle, const QUrl &url);

} // namespace orvane::SystemProxy
