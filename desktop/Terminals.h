#pragma once

#include <QByteArray>
#include <QStringList>

/// Windows in which Ctrl+V does not paste.
namespace orvane::Terminals {

/// By the class names of a window, in any case, several with a NUL between: known terminals, those that the
/// user names, and programs whose desktop entry says that they are one. The entries are read once, at the
/// first call: call on a pool thread.
[[nodiscard]] bool include(const QByteArray &windowClass, const QStringList &namedByUser);

} // namespace orvane::Terminals
