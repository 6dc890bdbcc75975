#include "app/settings/LocalizationTable.h"

namespace orvane::Localization {

namespace {

constexpr TextPair pairs[] = {
    // Dictation keys
    {u"правый Ctrl", u"right Ctrl"},
    {u"правый Alt", u"right Alt"},
    {u"правый ⌘", u"right ⌘"},
    {u"правый ⌥", u"right ⌥"},

    // Languages of speech: all but this one are called the same in every interface
    {u"Автоопределение", u"Auto-detect"},

    // Windows and menus
    {u"Настройки…", u"Settings…"},

    // Transcribing a file
    {u"Декодирование аудио…", u"Decoding audio…"},
    {u"Распознавание речи… (первый запуск движка — несколько секунд)",
     u"Recognizing speech… (the engine’s first start takes a few seconds)"},
    {u"Готово · ", u"Done · "},
    {u" сегментов", u" segments"},
    {u"Отменено", u"Cancelled"},
    {u"Ошибка", u"Error"},
    {u"Не удалось открыть файл: ", u"Could not open the file: "},
    {u"Ошибка декодирования аудио: ", u"Audio decoding failed: "},
    {u"не удалось настроить чтение дорожки", u"the audio track could not be set up for reading"},
    {u"не удалось начать чтение", u"reading could not be started"},
    {u"ошибка чтения", u"read error"},
    {u"В файле нет аудиодорожки.", u"The file has no audio track."},
    {u"В файле не найдено аудиоданных.", u"The file contains no audio data."},

    // History
    {u"Файл", u"File"},
    {u"Совещание", u"Meeting"},
    {u"Удалить «", u"Delete “"},
    {u"»?", u"”?"},
    {u"Текст расшифровки будет удалён без возможности восстановления.",
     u"The transcript text will be deleted and cannot be recovered."},
    {u"Текст расшифровки будет удалён без возможности восстановления. Аудиозапись совещания останется на "
     u"диске.",
     u"The transcript text will be deleted and cannot be recovered. The meeting’s audio recording will stay "
     u"on disk."},
    {u"Удалить расшифровку", u"Delete transcript"},
    {u"Удалить расшифровку из истории (аудиофайл записи останется на диске)",
     u"Delete the transcript from history (the recording’s audio file stays on disk)"},
    {u"Переименовать…", u"Rename…"},
    {u"Переименовать запись", u"Rename entry"},

    // Export
    {u"Скопировать текст или Markdown с таймкодами/спикерами",
     u"Copy text or Markdown with timecodes/speakers"},
    {u"Сохранить как .txt, .md или .srt", u"Save as .txt, .md or .srt"},
    {u"Сохранить как .txt", u"Save as .txt"},
    {u"Сохранить как .md (Markdown)", u"Save as .md (Markdown)"},
    {u"Сохранить как .srt", u"Save as .srt"},

    // Models: sizes in the catalogue, downloads
    {u"≈ 75 МБ", u"≈ 75 MB"},
    {u"≈ 142 МБ", u"≈ 142 MB"},
    {u"≈ 466 МБ", u"≈ 466 MB"},
    {u"≈ 0.4 ГБ", u"≈ 0.4 GB"},
    {u"≈ 0.5 ГБ", u"≈ 0.5 GB"},
    {u"≈ 1.0 ГБ", u"≈ 1.0 GB"},
    {u"≈ 1.5 ГБ", u"≈ 1.5 GB"},
    {u"≈ 2.6 ГБ", u"≈ 2.6 GB"},
    {u"≈ 2.9 ГБ", u"≈ 2.9 GB"},
    {u"≈ 4.7 ГБ", u"≈ 4.7 GB"},
    {u"Сервер вернул код ", u"The server returned code "},
    {u" вместо файла модели (возможно, файл недоступен).",
     u" instead of the model file (it may be unavailable)."},
    {u"Файл скачался не полностью (", u"The file was not downloaded completely ("},
    {u" из ", u" of "},
    {u" байт). Повторите загрузку.", u" bytes). Try the download again."},
    {u"Скачанный файл не является корректной моделью. Повторите загрузку.",
     u"The downloaded file is not a valid model. Try the download again."},
    {u"Не удалось скачать ", u"Could not download "},
    {u"Сервер ответил непонятно: неизвестен размер файла модели.",
     u"The server’s answer is unclear: it does not tell the size of the model file."},
    {u"Сервер отдаёт не тот файл, что в начале загрузки. Повторите её.",
     u"The server no longer sends the file it began with. Try the download again."},
    {u"Недостаточно места на диске: нужно ", u"Not enough disk space: "},
    {u" МБ, свободно ", u" MB needed, "},
    {u" МБ.", u" MB free."},
    {u"На диске кончилось место. Освободите его и повторите загрузку: она продолжится.",
     u"The disk is full. Free some space and try the download again: it will continue."},
    {u"Не удаётся записать файл в папку ", u"Could not write the file to the folder "},
    {u"Этот файл уже скачивается другим окном или командой — дождитесь окончания.",
     u"This file is already being downloaded by another window or command — wait until it is done."},
    {u"Адрес хранилища моделей не задан: укажите его при сборке или в команде.",
     u"The address of the model repository is not set: give it when building or on the command line."},
    {u"Сервер моделей не найден. Проверьте подключение к интернету.",
     u"The model server was not found. Check your internet connection."},
    {u"Сервер моделей перестал отвечать. Повторите загрузку: она продолжится.",
     u"The model server stopped responding. Try the download again: it will continue."},
    {u"Не удалось соединиться с сервером моделей. Повторите загрузку.",
     u"Could not connect to the model server. Try the download again."},
    {u"Не удалось установить защищённое соединение с сервером моделей.",
     u"Could not establish a secure connection to the model server."},
    {u"Сервер перенаправил загрузку на незащищённый адрес, поэтому она остановлена.",
     u"The server redirected the download to an insecure address, so it was stopped."},
    {u"Сервер перенаправляет загрузку по кругу.", u"The server redirects the download in circles."},
    {u"Прокси-сервер не пропускает загрузку. Проверьте настройки прокси.",
     u"The proxy server does not let the download through. Check the proxy settings."},

    // Correction models and engines
    {u"Встроенная (Apple)", u"Built-in (Apple)"},
    {u"Опенсорсная модель", u"Open-source model"},
    {u"Лёгкая · быстрая", u"Light · fast"},
    {u"Лёгкая", u"Light"},
    {u"Сбалансированная", u"Balanced"},
    {u"Высокая точность", u"High accuracy"},
    {u"Максимальное качество", u"Maximum quality"},
    {u"Русский, английский — хорошо. Для слабых Mac (8 ГБ).",
     u"Russian, English — good. For modest Macs (8 GB)."},
    {u"Многоязычная (Google). Русский — хорошо.", u"Multilingual (Google). Good Russian."},
    {u"Русский — отлично. Хороший выбор по умолчанию.", u"Excellent Russian. A solid default."},
    {u"Английский — отлично, русский — хорошо (Meta).", u"Excellent English, good Russian (Meta)."},
    {u"Русский, английский — превосходно. Для Mac с 16 ГБ.",
     u"Superb Russian and English. For Macs with 16 GB."},
    {u"Сильная многоязычная (Google). Для Mac с 16 ГБ+.",
     u"Strong multilingual (Google). For Macs with 16 GB+."},
    {u"Лучшая точность и русский. Нужен мощный Mac (24–32 ГБ).",
     u"Best accuracy and Russian. Needs a powerful Mac (24–32 GB)."},

    // Updates
    {u"Проверить обновления…", u"Check for updates…"},
    {u"Не удалось проверить обновления", u"Could not check for updates"},
    {u"Проверьте подключение к интернету и повторите.", u"Check your internet connection and try again."},
    {u"У вас последняя версия", u"You are up to date"},
    {u"Установлена версия", u"Installed version"},
    {u"Доступно обновление", u"Update available:"},
    {u"Нажмите «Скачать» — образ с новой версией скачается и откроется, останется перетащить приложение в "
     u"«Программы».",
     u"Click “Download” — the disk image with the new version will download and open; just drag the app into "
     u"Applications."},
    {u"Скачать", u"Download"},
    {u"Позже", u"Later"},
    {u"Скачиваю обновление…", u"Downloading update…"},
    {u"Скачиваю обновление", u"Downloading update"},
    {u"Не удалось скачать обновление", u"Could not download the update"},

    // Privacy
    {u"Делиться анонимной статистикой об устройстве", u"Share anonymous device statistics"},
    {u"Помогает развивать Orvane и сообщать о новых версиях. Раз в сутки отправляются ОС, модель Mac и "
     u"версия приложения — без имени, почты и содержимого расшифровок. Можно выключить в любой момент.",
     u"Helps improve Orvane and lets us notify you about new versions. Once a day it sends your OS, Mac "
     u"model and app version — no name, email, or transcript content. You can turn it off anytime."},
};

} // namespace

std::span<const TextPair> table()
{
    return pairs;
}

} // namespace orvane::Localization
