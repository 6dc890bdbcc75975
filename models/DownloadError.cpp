#include "models/DownloadError.h"

#include "base/files/FileError.h"
#include "base/localization/Localization.h"

using namespace Qt::StringLiterals;

namespace orvane {

using Localization::text;

namespace {

/// Rounded up, so that freeing what is asked for is enough.
QString megabytes(qint64 bytes)
{
    return QString::number(bytes / 1'000'000 + (bytes % 1'000'000 > 0 ? 1 : 0));
}

} // namespace

DownloadError DownloadError::badStatus(int code)
{
    return {Kind::BadStatus, text(u"Сервер вернул код ") + QString::number(code) +
                                 text(u" вместо файла модели (возможно, файл недоступен).")};
}

DownloadError DownloadError::truncated(qint64 received, qint64 expected)
{
    return {Kind::Truncated, text(u"Файл скачался не полностью (") + QString::number(received) +
                                 text(u" из ") + QString::number(expected) +
                                 text(u" байт). Повторите загрузку.")};
}

DownloadError DownloadError::corruptFile()
{
    return {Kind::CorruptFile, text(u"Скачанный файл не является корректной моделью. Повторите загрузку.")};
}

DownloadError DownloadError::badServerAnswer()
{
    return {Kind::BadServerAnswer, text(u"Сервер ответил непонятно: неизвестен размер файла модели.")};
}

DownloadError DownloadError::fileChanged()
{
    return {Kind::FileChanged, text(u"Сервер отдаёт не тот файл, что в начале загрузки. Повторите её.")};
}

DownloadError DownloadError::connectionFailed(const QString &reason)
{
    return {Kind::ConnectionFailed, reason};
}

DownloadError DownloadError::hostUnreachable(const QString &reason)
{
    return {Kind::HostUnreachable, reason};
}

DownloadError DownloadError::notEnoughSpace(qint64 needed, qint64 available)
{
    return {Kind::NotEnoughSpace, text(u"Недостаточно места на диске: нужно ") + megabytes(needed) +
                                      text(u" МБ, свободно ") + QString::number(available / 1'000'000) +
                                      text(u" МБ.")};
}

DownloadError DownloadError::diskFull()
{
    return {Kind::NotEnoughSpace,
            text(u"На диске кончилось место. Освободите его и повторите загрузку: она продолжится.")};
}

DownloadError DownloadError::notWritable(const QString &folder, int error)
{
    return {Kind::NotWritable,
            text(u"Не удаётся записать файл в папку ") + folder + u": "_s + FileError::reason(error) + u'.'};
}

DownloadError DownloadError::alreadyRunning()
{
    return {Kind::AlreadyRunning,
            text(u"Этот файл уже скачивается другим окном или командой — дождитесь окончания.")};
}

DownloadError DownloadError::noRepository()
{
    return {Kind::NoRepository,
            text(u"Адрес хранилища моделей не задан: укажите его в настройках или в команде.")};
}

DownloadError DownloadError::badRepository(const QString &address)
{
    return {Kind::NoRepository,
            text(u"Адрес хранилища моделей должен начинаться с http:// или https://: ") + address};
}

DownloadError DownloadError::insecureRepository()
{
    return {Kind::NoRepository, text(u"Адрес хранилища моделей должен начинаться с https://.")};
}

DownloadError DownloadError::notARepository()
{
    return {Kind::NoRepository, text(u"По этому адресу нет моделей.")};
}

DownloadError DownloadError::notAModel(const QString &file)
{
    return {Kind::UnknownModel, text(u"Это не файл модели: ") + file};
}

DownloadError DownloadError::unknownModel(const QString &file, const QString &example)
{
    return {Kind::UnknownModel,
            text(u"По этому файлу не видно, какая это модель. Назовите его как в каталоге, например %1: ")
                    .arg(example) +
                file};
}

} // namespace orvane
