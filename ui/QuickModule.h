#pragma once

#include <QFunctionPointer>
#include <QString>

namespace orvane {

/// A function of a module with Qt Quick in it, which stays loaded from then on. Null when there is none; a
/// line on standard error says why `what` could not be loaded. Any thread.
[[nodiscard]] QFunctionPointer loadedFunction(const QString &moduleFile, const char *name, const char *what);

} // namespace orvane
