#include "app/commandline/CommandLine.h"

#include "base/localization/Localization.h"

using namespace Qt::StringLiterals;

namespace orvane::CommandLine {

QString help()
{
    return Localization::text(uR"(Orvane превращает речь в текст на вашем компьютере.

  orvane transcribe ФАЙЛ|-…       расшифровать аудио или видео; - читает стандартный ввод
      --model ИМЯ|ПУТЬ            модель распознавания (по умолчанию выбранная в настройках)
      --language КОД              язык речи, например ru или en; auto — определить
      --speakers                  различать двух говорящих по голосу
      --format txt|md|srt|json    вид результата (по умолчанию txt)
      --output ПУТЬ|-             файл или папка для результата (по умолчанию стандартный вывод)
      --no-history                не сохранять в историю

  orvane correct [ФАЙЛ|-]         исправить в тексте пунктуацию и ошибки распознавания
  orvane email [ФАЙЛ|-]           составить из текста письмо
  orvane prompt [ФАЙЛ|-]          выполнить то, о чём просит текст
  orvane ask ВОПРОС [ФАЙЛ|-]      ответить на вопрос по тексту
  orvane protocol [ФАЙЛ|-]        составить по тексту протокол совещания
      --record ID                 взять текст записи; correct, ask и protocol сохранят в ней результат
      --model ИМЯ|ПУТЬ            языковая модель (по умолчанию выбранная в настройках)
      --output ПУТЬ|-             файл для результата (по умолчанию стандартный вывод)

  orvane history [list]           показать историю
  orvane history show ID          показать запись
  orvane history export ID        выдать запись (--format, --output — как выше)
  orvane history rename ID ИМЯ    переименовать запись
  orvane history retranscribe ID  расшифровать запись заново (--model, --language — как выше)
  orvane history delete ID        удалить запись

  orvane models [list]            показать модели: размер, память, что скачано
  orvane models download ID…      скачать модели; прерванная загрузка продолжится
  orvane models delete ID…        удалить модели
  orvane models path [ID…]        показать, где лежат модели
      --repository АДРЕС          откуда скачивать (по умолчанию как при сборке или в настройках)

  orvane                          открыть программу; с --background — только значок
  orvane open [ФАЙЛ…]             открыть окно и расшифровать в нём файлы
  orvane toggle                   начать диктовку, а если она идёт — закончить и вставить текст
  orvane tap                      нажать клавишу диктовки: дважды за 0,4 с — то же самое
  orvane start | stop | cancel    то же по отдельности; cancel ничего не вставляет
  orvane status                   показать состояние диктовки

  orvane meeting start            начать запись совещания
  orvane meeting stop             закончить её и расшифровать
  orvane meeting cancel           прервать расшифровку; аудиозапись останется
  orvane meeting [status]         показать, что с совещанием
  orvane meeting transcribe       расшифровать запись, оставшуюся после сбоя
  orvane meeting dismiss          больше не предлагать её; аудиозапись останется

  orvane check                    проверить движки, модели, микрофон, клавиши и папки; 1 — что-то не так
      --json                      то же для программ

  orvane --version                показать версию
  orvane --help                   показать эту справку

Коды завершения: 0 — готово, 1 — не получилось, 2 — ошибка в команде, 130 — прервано.
)");
}

} // namespace orvane::CommandLine
