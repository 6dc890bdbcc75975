#include "ui/presentation/FileChooser.h"

#include "base/localization/Localization.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

constexpr qsizetype maxLength = 120;

} // namespace

QString fileNameFor(const QString &title)
{
    QString name = title.simplified().left(maxLength);
    std::ranges::replace_if(name, [](QChar c) { return c < u' ' || u"/\\:*?\"<>|"_s.contains(c); }, u'-');
    while (name.startsWith(u'.') || name.startsWith(u'-') || name.startsWith(u' '))
        name.remove(0, 1);
    return name.isEmpty() ? Localization::text(u"Расшифровка") : name;
}

} // namespace orvane
