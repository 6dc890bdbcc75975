#include "ui/QuickModule.h"

#include <QLibrary>

namespace orvane {

QFunctionPointer loadedFunction(const QString &moduleFile, const char *name, const char *what)
{
    QLibrary library(moduleFile);
    library.setLoadHints(QLibrary::PreventUnloadHint); // Qt's own libraries do not survive that
    const QFunctionPointer function = library.resolve(name);
    if (!function)
        qWarning("%s could not be loaded: %s", what, qUtf8Printable(library.errorString()));
    return function;
}

} // namespace orvane
