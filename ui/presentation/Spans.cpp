#include "ui/presentation/Spans.h"

#include "base/localization/Localization.h"
#include "models/DownloadProgress.h"
#include "transcript/DisplaySegment.h"

#include <QLocale>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orvane::Spans {

namespace {

constexpr qint64 minute = 60;
constexpr qint64 hour = 60 * minute;

QLocale locale()
{
    return QLocale(Localization::isEnglish() ? u"en_US"_s : u"ru_RU"_s);
}

} // namespace

QString clock(qint64 milliseconds)
{
    return timecodeOf(std::max<qint64>(0, milliseconds));
}

QString joined(QStringList parts)
{
    parts.removeAll(QString());
    return parts.join(u" · "_s);
}

QString time(const QDateTime &time)
{
    return locale().toString(time.toLocalTime(), u"H:mm"_s);
}

QString moment(const QDateTime &time)
{
    return locale().toString(time.toLocalTime(), u"d MMMM, H:mm"_s);
}

QString remaining(qint64 milliseconds)
{
    if (milliseconds < 0)
        return {};
    const qint64 seconds = (milliseconds + 999) / 1000;
    if (seconds < minute)
        return Localization::text(u"осталось %1 с").arg(seconds);
    if (seconds < hour)
        return Localization::text(u"осталось %1 мин").arg((seconds + minute / 2) / minute);
    return Localization::text(u"осталось %1 ч %2 мин").arg(seconds / hour).arg(seconds % hour / minute);
}

QString day(const QDate &date, const QDate &today)
{
    if (date == today)
        return Localization::text(u"Сегодня");
    if (date == today.addDays(-1))
        return Localization::text(u"Вчера");
    return locale().toString(date, date.year() == today.year() ? u"d MMMM"_s : u"d MMMM yyyy"_s);
}

QString decimal(double number, int digits)
{
    return locale().toString(number, digits == QLocale::FloatingPointShortest ? 'g' : 'f', digits);
}

QString bytes(qint64 count)
{
    constexpr double mega = 1e6;
    constexpr double giga = 1e9;
    if (double(count) < giga)
        return u"%1 %2"_s.arg(qRound64(double(count) / mega)).arg(Localization::text(u"МБ"));
    return u"%1 %2"_s.arg(decimal(double(count) / giga, 1), Localization::text(u"ГБ"));
}

QString rate(double bytesPerSecond)
{
    constexpr double mega = 1e6;
    constexpr double exact = 10;
    if (bytesPerSecond <= 0)
        return {};
    const double megabytes = bytesPerSecond / mega;
    return u"%1 %2"_s.arg(decimal(megabytes, megabytes < exact ? 1 : 0), Localization::text(u"МБ/с"));
}

QString download(const DownloadProgress &progress)
{
    if (progress.isWaitingForNetwork)
        return Localization::text(u"Жду подключения к сети…");
    if (progress.totalBytes <= 0)
        return Localization::text(u"Соединяюсь…");
    return joined(
        {Localization::text(u"%1 из %2").arg(bytes(progress.receivedBytes), bytes(progress.totalBytes)),
         rate(progress.bytesPerSecond), remaining(progress.remainingMs)});
}

} // namespace orvane::Spans
