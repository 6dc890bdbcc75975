#include "update/PackageSuffix.h"

using namespace Qt::StringLiterals;

namespace orvane {

QString packageSuffix()
{
    return u"deb"_s;
}

} // namespace orvane
