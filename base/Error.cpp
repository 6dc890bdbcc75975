#include "base/Error.h"

#include "base/localization/Localization.h"

#include <new>

namespace orvane {

QString descriptionOf(const std::exception &failure)
{
    if (const auto *error = dynamic_cast<const Error *>(&failure))
        return error->description();
    if (dynamic_cast<const std::bad_alloc *>(&failure))
        return Localization::text(u"Не хватило памяти.");
    qWarning("%s", failure.what());
    return Localization::text(u"Внутренняя ошибка программы.");
}

} // namespace orvane
