#include "update/UpdateError.h"

#include "base/localization/Localization.h"

using namespace Qt::StringLiterals;

namespace orvane {

using Localization::text;

UpdateError UpdateError::serverNotFound()
{
    return {Kind::ServerNotFound, text(u"Сервер обновлений не найден. Проверьте подключение к интернету.")};
}

UpdateError UpdateError::notSecure()
{
    return {Kind::NotSecure, text(u"Не удалось установить защищённое соединение с сервером обновлений.")};
}

UpdateError UpdateError::noAnswer()
{
    return {Kind::NoAnswer, text(u"Сервер обновлений не отвечает. Повторите позже.")};
}

UpdateError UpdateError::connectionBroke()
{
    return {Kind::ConnectionBroke, text(u"Соединение с сервером обновлений прервалось. Повторите загрузку.")};
}

UpdateError UpdateError::badStatus(int status)
{
    return {Kind::BadStatus, text(u"Сервер вернул код ") + QString::number(status) + u'.'};
}

UpdateError UpdateError::insecurePackage()
{
    return {Kind::InsecurePackage,
            text(u"Сервер предлагает обновление по незащищённому адресу, поэтому оно не будет скачано.")};
}

UpdateError UpdateError::tooLarge()
{
    return {Kind::TooLarge, text(u"Ответ сервера обновлений слишком велик.")};
}

UpdateError UpdateError::notWritable(const QString &folder)
{
    return {Kind::NotWritable,
            text(u"Не удалось записать файл. Проверьте, есть ли место и доступ к папке ") + folder + u'.'};
}

} // namespace orvane
