#include "correction/BuiltInModel.h"

#include "base/localization/Localization.h"

using namespace Qt::StringLiterals;

namespace orvane {

QString BuiltInModel::reasonText(const QString &reason)
{
    const auto mentions = [&reason](const QString &one, const QString &other) {
        return reason.contains(one, Qt::CaseInsensitive) || reason.contains(other, Qt::CaseInsensitive);
    };
    if (mentions(u"enable"_s, u"intelligence"_s)) {
        return Localization::text(u"Включите Apple Intelligence в Системных настройках, затем повторите.");
    }
    if (mentions(u"eligible"_s, u"device"_s))
        return Localization::text(u"Это устройство не поддерживает Apple Intelligence.");
    if (mentions(u"ready"_s, u"download"_s))
        return Localization::text(u"Языковая модель ещё загружается — попробуйте чуть позже.");
    return Localization::text(u"Локальная модель сейчас недоступна") + u" ("_s + reason + u')';
}

} // namespace orvane
