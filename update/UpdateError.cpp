#include "update/UpdateError.h"

#include "base/localization/Localization.h"

using namespace Qt::StringLiterals;

namespace orvane {

using Localization::text;

UpdateError UpdateError::serverNotFound()
{
    return {Kind::ServerNotFound, text(u"Сервер обновлений не найден. Проверьте подключение к интернету."_s)};
}

UpdateError UpdateError::notSecure()
{
    return {Kind::NotSecure, text(u"Не удалось установить защищённое соединение с сервером обновлений."_s)};
}

UpdateError UpdateError::noAnswer()
{
    return {Kind::NoAnswer, text(u"Сервер обновлений не отвечает. Повторите позже."_s)};
}

UpdateError UpdateError::connectionBroke()
{
    return {Kind::ConnectionBroke,
            text(u"Соединение с сервером обновлений прервалось. Повторите загрузку."_s)};
}

UpdateError UpdateError::badStatus(int status)
{
    return {Kind::BadStatus, text(u"Сервер вернул код "_s) + QString::number(status) + u'.'};
}

UpdateError UpdateError::tooLarge()
{
    return {Kind::TooLarge, text(u"Ответ сервера обновлений слишком велик."_s)};
}

UpdateError UpdateError::notWritable(const QString &folder)
{
    return {Kind::NotWritable,
            text(u"Не удалось записать файл. Проверьте, есть ли место и доступ к папке "_s) + folder + u'.'};
}

} // namespace orvane
