#include "audio/CaptureError.h"

#include "base/localization/Localization.h"

namespace orvane {

CaptureError CaptureError::noInputDevice()
{
    return {Kind::noInputDevice,
            Localization::text(
                u"Микрофон не найден. Подключите его или выберите устройство ввода в настройках звука.")};
}

CaptureError CaptureError::accessRefused()
{
    return {Kind::accessRefused,
            Localization::text(u"Нет доступа к микрофону. Разрешите его в Системных настройках → "
                               "Конфиденциальность → Микрофон.")};
}

CaptureError CaptureError::deviceFailed(const QString &description)
{
    return {Kind::deviceFailed, description};
}

} // namespace orvane
