#pragma once

#include <QDateTime>
#include <QLocale>
#include <QString>
#include <QStringList>

namespace orvane {
struct DownloadProgress;
}

/// Times and sizes as the windows show them, in the interface language.
namespace orvane::Spans {

/// "0:07", "48:12", "1:31:07".
[[nodiscard]] QString clock(qint64 milliseconds);

/// Those that are not empty, in one line.
[[nodiscard]] QString joined(QStringList parts);

/// "14:05" in local time.
[[nodiscard]] QString time(const QDateTime &time);

/// "21 ноября, 10:51" in local time.
[[nodiscard]] QString moment(const QDateTime &time);

/// "осталось 23 с", "осталось 4 мин"; empty while unknown (negative).
[[nodiscard]] QString remaining(qint64 milliseconds);

/// "Сегодня", "Вчера", "12 ноября", "3 мая 2024".
[[nodiscard]] QString day(const QDate &date, const QDate &today);

/// "1,25" or "1.25".
[[nodiscard]] QString decimal(double number, int digits = QLocale::FloatingPointShortest);

/// "960 МБ", "1,5 ГБ".
[[nodiscard]] QString bytes(qint64 count);

/// "24 МБ/с", "1,5 МБ/с"; empty while unknown (0).
[[nodiscard]] QString rate(double bytesPerSecond);

/// "960 МБ из 1,5 ГБ · 24 МБ/с · осталось 23 с", or what a download waits for.
[[nodiscard]] QString download(const DownloadProgress &progress);

} // namespace orvane::Spans
