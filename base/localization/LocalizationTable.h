#pragma once

#include <string_view>

namespace orvane::Localization {

/// A text of the program and its English translation.
struct TextPair
{
    std::u16string_view russian;
    std::u16string_view english;
};

/// Every pair, grouped by the area that shows it.
inline constexpr TextPair table[] = {
    // Dictation keys
    {u"правый Ctrl", u"right Ctrl"},
    {u"правый Alt", u"right Alt"},
    {u"правый ⌘", u"right ⌘"},
    {u"правый ⌥", u"right ⌥"},

    // Dictation: the modes and the indicator
    {u"Исправить", u"Correct"},
    {u"Письмо", u"Email"},
    {u"Промпт", u"Prompt"},
    {u"Исправляю…", u"Correcting…"},
    {u"Составляю письмо…", u"Composing the email…"},
    {u"Выполняю запрос…", u"Running the request…"},
    {u"Исправить: модель чинит пунктуацию и грамматику надиктованного.",
     u"Correct: the model fixes the punctuation and grammar of what you dictated."},
    {u"Письмо: модель оформляет надиктованное как готовый email.",
     u"Email: the model turns what you dictated into a ready email."},
    {u"Промпт: надиктованное выполняется моделью как запрос; вставляется результат.",
     u"Prompt: the model runs what you dictated as a request; the result is inserted."},
    {u"Готов", u"Ready"},
    {u"Слушаю…", u"Listening…"},
    {u"Дважды", u"Double-press"},
    {u"готово · Esc — отмена", u"to finish · Esc to cancel"},
    {u"готово · ✕ — отмена", u"to finish · ✕ to cancel"},
    {u"orvane toggle или меню — готово · ✕ — отмена", u"orvane toggle or the menu to finish · ✕ to cancel"},
    {u"Нет звука с микрофона — проверьте его", u"No sound from the microphone — check it"},
    {u"Распознаю…", u"Recognizing…"},
    {u"Подождите немного", u"Just a moment"},
    {u"Обрабатываю…", u"Processing…"},
    {u"Пунктуация и грамматика", u"Punctuation and grammar"},
    {u"Оформляю как письмо", u"Composing an email"},
    {u"Выполняю как запрос", u"Running as a request"},

    // Languages of speech: all but this one are called the same in every interface
    {u"Автоопределение", u"Auto-detect"},

    // Keys that the desktop gives
    {u"%1 дважды", u"%1 twice"},
    {u" или ", u" or "},
    {u"рабочий стол", u"the desktop"},
    {u"левый или правый Ctrl", u"the left or right Ctrl"},
    {u"левый или правый Alt", u"the left or right Alt"},
    {u"Сменить их можно в «Параметры системы → Комбинации клавиш → Orvane».",
     u"They are changed in System Settings → Shortcuts → Orvane."},
    {u"Другие клавиши назначьте в настройках sway командам orvane tap и orvane toggle.",
     u"For other keys, bind them to orvane tap and orvane toggle in sway’s configuration."},
    {u"Сменить их можно в «Настройки → Приложения → Orvane → Глобальные комбинации клавиш».",
     u"They are changed in Settings → Apps → Orvane → Global Shortcuts."},
    {u"Сменить их можно в «Настройки → Клавиатура → Комбинации клавиш».",
     u"They are changed in Settings → Keyboard → Keyboard Shortcuts."},
    {u"Уже занято на рабочем столе: %1.", u"Something else on this desktop has: %1."},
    {u"Рабочий стол не дал клавиш.", u"The desktop has given no keys."},
    {u"Настройки GNOME не приняли клавиш.", u"GNOME’s settings did not take the keys."},
    {u"Начать или закончить диктовку", u"Start or finish a dictation"},
    {u"Рабочий стол не даёт программам нажимать клавиши: вставляйте текст сочетанием Ctrl+V.",
     u"The desktop lets no program press keys: insert texts with Ctrl+V."},
    {u"Вставка не разрешена: текст ждёт в буфере обмена, вставьте его сочетанием Ctrl+V.",
     u"Pasting is not allowed: the text waits on the clipboard, insert it with Ctrl+V."},
    {u"Разрешить вставку текста…", u"Allow pasting of text…"},
    {u"Рабочий стол спросит об удалённом управлении: разрешите его и оставьте «Запомнить». Orvane только "
     u"нажимает вставку.",
     u"The desktop will ask about remote control: allow it and leave “Remember” on. Orvane only presses "
     u"paste."},
    {u"Вставку нужно разрешить: «Разрешить вставку текста…» в меню Orvane.",
     u"Pasting has to be allowed: “Allow pasting of text…” in Orvane’s menu."},
    {u"Начать или закончить диктовку: нажать дважды", u"Start or finish a dictation: press twice"},

    // Dictation
    {u"Нет модели", u"No model"},
    {u"Сначала скачайте модель Whisper: меню Orvane → «Настройки моделей…».",
     u"First download a Whisper model: Orvane menu → “Model settings…”."},
    {u"Не удалось начать запись", u"Couldn’t start recording"},
    {u"Нет доступа к микрофону", u"No microphone access"},
    {u"Разрешите доступ в Системных настройках → Конфиденциальность и безопасность → Микрофон.",
     u"Allow access in System Settings → Privacy & Security → Microphone."},
    {u"Распознавание прервано.", u"The recognition was interrupted."},
    {u"Текст не вставлен: буфер обмена недоступен.",
     u"The text was not inserted: the clipboard is not available."},
    {u"Нужна модель для этого режима", u"This mode needs a model"},
    {u"Режимы «Письмо» и «Промпт» обрабатывают речь языковой моделью. Настройте её в Настройки → "
     u"«Коррекция». "
     u"Сейчас вставлен распознанный текст без обработки.",
     u"The Email and Prompt modes process speech with a language model. Set it up in Settings → "
     u"“Correction”. "
     u"For now the recognized text was inserted without processing."},
    {u"Текст в буфере обмена — вставьте его: Ctrl+V", u"The text is on the clipboard — paste it: Ctrl+V"},
    {u"Языковая модель занята — вставлен распознанный текст без обработки.",
     u"The language model is busy — the recognized text was inserted without processing."},

    // The menu in the tray
    {u"Начать диктовку", u"Start dictation"},
    {u"Завершить диктовку", u"Finish dictation"},
    {u"Отменить диктовку", u"Cancel dictation"},
    {u"Модель распознавания", u"Recognition model"},
    {u"Нет скачанных моделей", u"No models downloaded"},
    {u"Клавиша диктовки", u"Dictation key"},
    {u"Язык распознавания", u"Recognition language"},
    {u"Режим диктовки", u"Dictation mode"},
    {u"Перехват клавиш: активен", u"Key capture: active"},
    {u"Перехват клавиш: нет доступа", u"Key capture: no access"},
    {u"Перехват клавиш: F5 или Esc заняты другой программой",
     u"Key capture: another program keeps F5 or Esc"},
    {u"Перехват клавиш: в раскладке нет клавиши «%1» — выберите другую",
     u"Key capture: the keyboard layout has no %1 — choose another key"},
    {u"Перехват клавиш: %1", u"Key capture: %1"},
    {u"Перехват клавиш: уже занято %1", u"Key capture: something else has %1"},
    {u"Выдать «Универсальный доступ»…", u"Grant Accessibility…"},
    {u"Назначить клавиши диктовки…", u"Set up the keys of dictation…"},
    {u"Клавиши назначены: %1.", u"The keys are set up: %1."},
    {u"Клавиши диктовки здесь недоступны", u"The dictation keys don’t work here"},
    {u"Этот рабочий стол не даёт программам слушать клавиши. Назначьте в его настройках сочетание клавиш для "
     u"команды «orvane toggle»: первое нажатие начнёт диктовку, второе закончит.",
     u"This desktop does not let programs listen to keys. In its settings, bind a key to the command “orvane "
     u"toggle”: the first press starts a dictation, the second finishes it."},
    {u"Доступна версия ", u"Version available: "},
    {u"Завершить Orvane", u"Quit Orvane"},

    {u"Начать запись совещания", u"Start recording a meeting"},
    {u"Завершить запись совещания", u"Finish recording the meeting"},
    {u"Прервать расшифровку — аудиозапись совещания останется на диске",
     u"Abandon the transcription — the meeting’s audio stays on disk"},
    {u"Запись совещания не расшифрована", u"A meeting is not transcribed"},
    {u"Расшифровать", u"Transcribe"},
    {u"Больше не предлагать", u"Do not offer again"},
    {u"Нерасшифрованные записи", u"Recordings to transcribe"},
    {u"Расшифровать можно из меню Orvane.", u"It can be transcribed from the Orvane menu."},

    // What the running application answers to the command line
    {u"Неизвестное действие с совещанием: ", u"Unknown action for meetings: "},
    {u"Нерасшифрованных записей нет.", u"There are no recordings left to transcribe."},
    {u"Предыдущая диктовка ещё обрабатывается.", u"The previous dictation is still being processed."},
    {u"Диктовка уже идёт.", u"A dictation is already running."},
    {u"Диктовка не началась.", u"The dictation did not begin."},
    {u"Эта запись сейчас расшифровывается.", u"This recording is being transcribed now."},
    {u"Диктовка сейчас не записывается.", u"No dictation is being recorded."},
    {u"Отменять нечего: диктовка не идёт.", u"Nothing to cancel: no dictation is running."},
    {u"Orvane работает без экрана, диктовать здесь некуда.",
     u"Orvane runs without a display; there is nowhere to dictate to."},
    {u"Orvane не отвечает: запустите его командой orvane.",
     u"Orvane does not answer: start it with the command orvane."},

    // Windows and menus
    {u"Настройки…", u"Settings…"},

    // Transcribing a file
    {u"Декодирование аудио…", u"Decoding audio…"},
    {u"Распознавание речи… (первый запуск движка — несколько секунд)",
     u"Recognizing speech… (the engine’s first start takes a few seconds)"},
    {u"Готово · ", u"Done · "},
    {u" сегментов", u" segments"},
    {u"файл повреждён с %1, дальше ничего не распознано",
     u"the file is damaged from %1, nothing after that was recognized"},
    {u"Отменено", u"Cancelled"},
    {u"Ошибка", u"Error"},
    {u"Не удалось открыть файл: ", u"Could not open the file: "},
    {u"Ошибка декодирования аудио: ", u"Audio decoding failed: "},
    {u"не удалось настроить чтение дорожки", u"the audio track could not be set up for reading"},
    {u"не удалось начать чтение", u"reading could not be started"},
    {u"ошибка чтения", u"read error"},
    {u"В файле нет аудиодорожки.", u"The file has no audio track."},
    {u"В файле не найдено аудиоданных.", u"The file contains no audio data."},
    {u"файл не найден", u"file not found"},
    {u"нет доступа", u"access denied"},
    {u"это папка", u"it is a folder"},
    {u"это не обычный файл", u"it is not a regular file"},
    {u"файл пуст", u"the file is empty"},
    {u"это не аудио и не видео, или файл повреждён", u"it is neither audio nor video, or it is damaged"},
    {u"в нём только ссылки на другие файлы", u"it only refers to other files"},
    {u"модуль декодирования не загрузился; переустановите программу",
     u"the decoding module could not be loaded; reinstall the program"},
    {u"формат звука не поддерживается: ", u"unsupported audio format: "},
    {u"данные повреждены", u"the data is damaged"},
    {u"не хватило памяти", u"not enough memory"},
    {u"запись длиннее 37 часов", u"the recording is longer than 37 hours"},
    {u"Не вся запись поместилась в звуковой файл.", u"Not all of the recording fitted into the audio file."},
    {u"Дождитесь завершения текущей операции — движок выполняет их по одной",
     u"Wait until the current operation is done — the engine does them one by one"},

    // Recording sound
    {u"Микрофон не найден. Подключите его или выберите устройство ввода в настройках звука.",
     u"No microphone was found. Connect one or choose an input device in the sound settings."},
    {u"Звуковая служба не отвечает. Проверьте, запущена ли она (PulseAudio или PipeWire).",
     u"The sound service does not answer. Check that it is running (PulseAudio or PipeWire)."},
    {u"Микрофон не открывается. Подключите его заново или выберите другой в настройках звука.",
     u"The microphone cannot be opened. Connect it again or choose another one in the sound settings."},
    {u"Модуль записи звука не загрузился. Переустановите программу.",
     u"The sound recording module could not be loaded. Reinstall the program."},
    {u"Звуковая система отказала, запись закончилась раньше времени.",
     u"The sound system failed, the recording ended early."},

    // Meetings
    {u"Идёт запись…", u"Recording…"},
    {u"на диске осталось места на %1 мин", u"disk space left for %1 min"},
    {u"микрофон молчит", u"the microphone is silent"},
    {u"Идёт запись совещания", u"A meeting is being recorded"},
    {u"Подготовка записи…", u"Preparing the recording…"},
    {u"Расшифровка записи (%1:%2)…", u"Transcribing the recording (%1:%2)…"},
    {u"Совещание сохранено · ", u"Meeting saved · "},
    {u" сегментов · аудио в истории", u" segments · audio in history"},
    {u"Готово · речь не распознана (запись сохранена)",
     u"Done · no speech recognized (the recording is saved)"},
    {u"Расшифровка отменена · аудиозапись сохранена",
     u"Transcription cancelled · the audio recording is saved"},
    {u"Ошибка расшифровки (запись сохранена: ", u"Transcription failed (the recording is saved: "},
    {u"Запись сохранена частично — возможно, на диске не хватило места.",
     u"The recording is only partly saved — the disk may have run out of space."},
    {u"Нет доступа к микрофону. Разрешите его в Системных настройках → Конфиденциальность → Микрофон.",
     u"No access to the microphone. Allow it in System Settings → Privacy → Microphone."},
    {u"Не удалось начать запись: ", u"Could not start the recording: "},
    {u"Модель распознавания недоступна.", u"The recognition model is unavailable."},
    {u"Движок распознавания был остановлен.", u"The recognition engine was stopped."},
    {u"Запись совещания уже идёт.", u"A meeting is being recorded already."},
    {u"Запись совещания не идёт.", u"No meeting is being recorded."},
    {u"Идёт запись: её завершает команда orvane meeting stop.",
     u"A meeting is being recorded: the command orvane meeting stop ends it."},
    {u"Расшифровка совещания не идёт.", u"No meeting is being transcribed."},
    {u"Осталась нерасшифрованная запись: «%1», %2. Расшифровать?",
     u"A recording is not transcribed yet: “%1”, %2. Transcribe it?"},

    // The meeting's page, and what the program is doing
    {u"на диске места на %1 мин", u"disk space for %1 min"},
    {u"на диске места на %1 ч", u"disk space for %1 h"},
    {u"Микрофон не найден", u"No microphone found"},
    {u"Открыть запись нечем: ", u"No program opens this recording: "},
    {u"Больше не предлагать — аудиозапись останется на диске",
     u"Don’t offer again — the recording stays on the disk"},
    {u"Отменить", u"Cancel"},
    {u"Загрузка %1", u"Downloading %1"},
    {u"Нерасшифрованная запись", u"Recording to transcribe"},
    {u"Отменить загрузку и удалить скачанное", u"Cancel the download and delete what it has brought"},
    {u"Расшифровка файла", u"Transcribing a file"},
    {u"Расшифровка совещания", u"Transcribing a meeting"},
    {u"Повторная расшифровка", u"Transcribing again"},

    // Whether everything works
    {u"Движок распознавания", u"Speech engine"},
    {u"Языковой движок", u"Language engine"},
    {u"Файлы моделей", u"Model files"},
    {u"Микрофон", u"Microphone"},
    {u"Клавиши диктовки", u"Dictation keys"},
    {u"Вставка текста", u"Inserting text"},
    {u"Место на диске", u"Disk space"},
    {u"Папки данных", u"Data folders"},
    {u"Проверяю…", u"Checking…"},
    {u"Всё работает.", u"Everything works."},
    {u"Не в порядке: %1.", u"Not in order: %1."},
    {u"Отвечает с моделью %1.", u"Answers with the model %1."},
    {u"Сейчас обрабатывает текст.", u"It is processing a text now."},
    {u"Движок не найден: переустановите Orvane или установите whisper.cpp так, чтобы программа "
     u"whisper-server "
     u"была в PATH.",
     u"The engine was not found: reinstall Orvane, or install whisper.cpp so that its program whisper-server "
     u"is "
     u"in PATH."},
    {u"Движок не найден: установите llama.cpp так, чтобы программа llama-server была в PATH.",
     u"The engine was not found: install llama.cpp so that its program llama-server is in PATH."},
    {u"Движок не запускается с моделью %1: скачайте её заново или выберите модель поменьше.",
     u"The engine does not start with the model %1: download it again, or choose a smaller one."},
    {u"Движок не отвечает с моделью %1: перезапустите Orvane, а если не поможет — компьютер.",
     u"The engine does not answer with the model %1: restart Orvane or, if that does not help, the "
     u"computer."},
    {u"Модель не скачана: выберите её в настройках («Модели») или выполните orvane models download base.",
     u"No model is downloaded: choose one in the settings (“Models”), or run orvane models download base."},
    {u"Файлы моделей в порядке, %1.", u"The model files are in order, %1."},
    {u"Файл повреждён: %1. Удалите модель и скачайте её заново.",
     u"Damaged file: %1. Delete the model and download it again."},
    {u"Микрофон «%1» молчит: включите его кнопкой или выберите другой в настройках звука.",
     u"The microphone “%1” is silent: switch it on, or choose another one in the sound settings."},
    {u"Слышно: %1.", u"Sound comes from %1."},
    {u"Нет экрана: клавиши здесь не проверить.", u"No screen: keys cannot be checked here."},
    {u"Нет экрана: вставку текста здесь не проверить.", u"No screen: inserting text cannot be checked here."},
    {u"Слышны: «%1» дважды начинает диктовку.", u"They are heard: %1 twice starts a dictation."},
    {u"Клавиши здесь даёт рабочий стол, пока Orvane работает: какие, говорит его меню.",
     u"Here the desktop gives keys while Orvane runs: its menu says which."},
    {u"Слышны: %1.", u"They are heard: %1."},
    {u"Клавиши ещё не назначены: в меню Orvane выберите «Назначить клавиши диктовки…».",
     u"The keys are not set up yet: choose “Set up the keys of dictation…” in Orvane’s menu."},
    {u"В раскладке нет клавиши «%1»: выберите в настройках другую.",
     u"The keyboard layout has no %1: choose another key in the settings."},
    {u"F5 или Esc держит другая программа: освободите их в её настройках.",
     u"Another program keeps F5 or Esc: free them in its settings."},
    {u"Программам клавиши здесь не слышны: в «Настройки → Клавиатура → Комбинации клавиш» назначьте клавишу "
     u"команде orvane toggle.",
     u"Programs do not hear keys here: in “Settings → Keyboard → Keyboard Shortcuts” bind a key to the "
     u"command "
     u"orvane toggle."},
    {u"Программам клавиши здесь не слышны: в «Параметры системы → Комбинации клавиш» назначьте клавишу "
     u"команде "
     u"orvane toggle.",
     u"Programs do not hear keys here: in “System Settings → Shortcuts” bind a key to the command orvane "
     u"toggle."},
    {u"Программам клавиши здесь не слышны: в настройках рабочего стола назначьте клавишу команде orvane "
     u"toggle.",
     u"Programs do not hear keys here: in the desktop’s settings bind a key to the command orvane toggle."},
    {u"Текст вставляется туда, где стоит курсор.", u"Text goes to where the cursor is."},
    {u"Программам нельзя нажимать здесь клавиши: текст ждёт в буфере обмена, вставьте его сочетанием Ctrl+V.",
     u"Programs may not press keys here: the text waits on the clipboard, insert it with Ctrl+V."},
    {u"Свободно %1.", u"%1 free."},
    {u"Свободное место неизвестно.", u"The free space is unknown."},
    {u"Осталось %1: освободите место, иначе записи и модели не поместятся.",
     u"%1 left: free some space, or recordings and models will not fit."},
    {u"Доступны для записи: %1", u"They can be written: %1"},
    {u"На месте папки лежит файл %1: переименуйте или удалите его.",
     u"The file %1 is where a folder should be: rename or delete it."},
    {u"В папку нельзя писать: выполните chmod u+rwx \"%1\".",
     u"The folder cannot be written: run chmod u+rwx \"%1\"."},
    {u"В папку %1 нельзя писать (%2): проверьте диск.",
     u"The folder %1 cannot be written (%2): check the disk."},
    {u"Папку видят другие пользователи: выполните chmod 700 \"%1\".",
     u"Other users can look into the folder: run chmod 700 \"%1\"."},

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
    {u"В записи нет текста.", u"The record has no text."},
    {u"Аудиофайл этой записи не найден, поэтому расшифровать её заново нельзя.",
     u"This record’s audio file was not found, so it cannot be transcribed again."},

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
    {u"Адрес хранилища моделей должен начинаться с http:// или https://: ",
     u"The address of the model repository has to begin with http:// or https://: "},
    {u"Адрес хранилища моделей не задан: укажите его в настройках или в команде.",
     u"The address of the model repository is not set: give it in the settings or on the command line."},
    {u"Адрес хранилища моделей должен начинаться с https://.",
     u"The address of the model repository has to begin with https://."},
    {u"По этому адресу нет моделей.", u"There are no models at this address."},
    {u"Это не файл модели: ", u"This is no model file: "},
    {u"По этому файлу не видно, какая это модель. Назовите его как в каталоге, например %1: ",
     u"The file does not tell which model it is. Give it the catalogue’s name, such as %1: "},
    {u"Сервер моделей не найден. Проверьте подключение к интернету.",
     u"The model server was not found. Check your internet connection."},
    {u"Сервер моделей перестал отвечать. Повторите загрузку: она продолжится.",
     u"The model server stopped responding. Try the download again: it will continue."},
    {u"жду подключения к сети", u"waiting for a network"},
    {u"Не удалось соединиться с сервером моделей. Повторите загрузку.",
     u"Could not connect to the model server. Try the download again."},
    {u"Модели не скачать: в системе нет библиотеки libcurl.",
     u"Models cannot be downloaded: this system has no library libcurl."},
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

    {u"Включите Apple Intelligence в Системных настройках, затем повторите.",
     u"Enable Apple Intelligence in System Settings, then try again."},
    {u"Это устройство не поддерживает Apple Intelligence.",
     u"This device doesn’t support Apple Intelligence."},
    {u"Языковая модель ещё загружается — попробуйте чуть позже.",
     u"The language model is still downloading — try again shortly."},
    {u"Локальная модель сейчас недоступна", u"The local model is currently unavailable"},
    {u"Apple Intelligence недоступен в этой сборке.", u"Apple Intelligence isn’t available in this build."},

    // Text processing
    {u"Обработка текста ИИ-моделью выключена в настройках («Коррекция»).",
     u"AI text processing is turned off in Settings (“Correction”)."},
    {u"Движок llama.cpp не установлен. В Терминале выполните: brew install llama.cpp",
     u"The llama.cpp engine isn’t installed. In Terminal, run: brew install llama.cpp"},
    {u"Скачайте модель коррекции в настройках (вкладка «Коррекция»).",
     u"Download a correction model in Settings (“Correction” tab)."},
    {u"Выберите модель коррекции в настройках.", u"Choose a correction model in Settings."},
    {u"Не выбрана модель коррекции.", u"No correction model is selected."},
    {u"Коррекция недоступна.", u"Correction is unavailable."},
    {u"Модель недоступна.", u"The model is unavailable."},
    {u"Документ слишком большой для чата. Сократите его или задайте вопрос по части текста.",
     u"The document is too large for chat. Shorten it or ask about part of the text."},
    {u"Модель занята другим текстом — дождитесь, пока она его обработает.",
     u"The model is busy with another text — wait until it is done."},
    {u"Модель ничего не ответила.", u"The model gave no answer."},

    // The catalogues of models
    {u"Используется", u"In use"},
    {u"Скачана не полностью: загрузку можно продолжить.",
     u"Partly downloaded: the download can be continued."},
    {u"Жду подключения к сети…", u"Waiting for a network…"},
    {u"Соединяюсь…", u"Connecting…"},
    {u" ОЗУ", u" RAM"},
    {u"ГБ ОЗУ", u"GB RAM"},
    {u"самая быстрая, черновое качество", u"the quickest, draft quality"},
    {u"быстрая, для коротких диктовок", u"quick, for short dictations"},
    {u"хороший русский, заметки и диктовка", u"good Russian, notes and dictation"},
    {u"заметки и диктовка", u"notes and dictation"},
    {u"точная, медленнее Turbo", u"accurate, slower than Turbo"},
    {u"лучшая точность при разумной скорости", u"the best accuracy at a reasonable speed"},
    {u"самая точная и самая медленная", u"the most accurate and the slowest"},
    {u"прежнее поколение, медленная", u"an earlier generation, slow"},
    {u"Движок whisper.cpp найден. Модели хранятся на этом компьютере.",
     u"whisper.cpp engine found. The models are kept on this computer."},
    {u"Движок whisper.cpp не установлен — модели не смогут запуститься. Положите whisper-server в одну из "
     u"папок, перечисленных в PATH.",
     u"The whisper.cpp engine isn’t installed — models won’t run. Put whisper-server into one of the folders "
     u"listed in PATH."},
    {u"Движок llama.cpp найден", u"llama.cpp engine found"},
    {u"Движок llama.cpp не установлен — модели не смогут запуститься.",
     u"The llama.cpp engine isn’t installed — models won’t run."},
    {u"Положите llama-server в одну из папок, перечисленных в PATH.",
     u"Put llama-server into one of the folders listed in PATH."},
    {u"Модели скачиваются отсюда.", u"Models are downloaded from here."},
    {u"В этой сборке не указано, откуда скачивать модели. Укажите адрес или добавьте модель из файла.",
     u"This build does not know where to download models from. Give an address, or add a model from a file."},

    // The settings
    {u"Без окон: только значок в области уведомлений.", u"Without windows: only the icon in the tray."},
    {u"Нажмите %1 дважды, чтобы начать, и ещё раз дважды, чтобы вставить текст.",
     u"Press %1 twice to begin, and twice again to insert the text."},
    {u"Нажмите %1, чтобы начать, и ещё раз, чтобы вставить текст.",
     u"Press %1 to begin, and again to insert the text."},
    {u"То же делает %1.", u"%1 does the same."},
    {u"Esc отменяет.", u"Esc cancels."},
    {u"Отменяет ✕ на индикаторе.", u"The ✕ on the indicator cancels."},
    {u"В раскладке клавиатуры нет клавиши «%1» — выберите другую.",
     u"The keyboard layout has no %1 — choose another key."},
    {u"Сейчас F5 или Esc заняты другой программой.", u"At the moment another program keeps F5 or Esc."},
    {u"Новые версии ищутся раз в сутки.", u"New versions are looked for once a day."},
    {u"Модель из списка ниже работает на этом компьютере.",
     u"A model of the list below runs on this computer."},
    {u"Пока работает модель из списка ниже.", u"Until then a model of the list below is used."},
    {u"На Intel крупные модели работают медленно — берите лёгкие.",
     u"On Intel, large models run slowly — pick lighter ones."},
    {u"Полностью локально и приватно, без скачивания моделей. Требуется Mac с Apple Silicon и включённым "
     u"Apple Intelligence.",
     u"Fully local and private, no model downloads. Requires a Mac with Apple Silicon and Apple Intelligence "
     u"enabled."},
    {u"Встроенная модель Apple готова к работе.", u"The built-in Apple model is ready."},

    // The first start
    {u"Этому компьютеру подойдёт %1. Модель можно сменить в любой момент.",
     u"%1 suits this computer. The model can be changed at any time."},
    {u"Скажите что-нибудь: полоски должны подпрыгнуть.", u"Say something: the bars should jump."},
    {u"Микрофон слышит вас.", u"The microphone hears you."},

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
    {u"В этой сборке не задан адрес сервера обновлений.",
     u"This build does not know the address of an update server."},
    {u"Сервер обновлений не найден. Проверьте подключение к интернету.",
     u"The update server was not found. Check your internet connection."},
    {u"Не удалось установить защищённое соединение с сервером обновлений.",
     u"A secure connection to the update server could not be made."},
    {u"Сервер обновлений не отвечает. Повторите позже.",
     u"The update server does not answer. Try again later."},
    {u"Соединение с сервером обновлений прервалось. Повторите загрузку.",
     u"The connection to the update server broke off. Try the download again."},
    {u"Сервер предлагает обновление по незащищённому адресу, поэтому оно не будет скачано.",
     u"The server offers the update at an insecure address, so it won’t be downloaded."},
    {u"Ответ сервера обновлений слишком велик.", u"The update server’s answer is too large."},
    {u"Не удалось записать файл. Проверьте, есть ли место и доступ к папке ",
     u"The file could not be written. Check that there is room and access to the folder "},
    {u"Не удалось открыть обновление", u"Could not open the update"},
    {u"Откройте скачанный файл сами: ", u"Open the downloaded file yourself: "},

    // Privacy
    {u"Делиться анонимной статистикой об устройстве", u"Share anonymous device statistics"},
    {u"Помогает развивать Orvane и сообщать о новых версиях. Раз в сутки отправляются ОС, модель Mac и "
     u"версия приложения — без имени, почты и содержимого расшифровок. Можно выключить в любой момент.",
     u"Helps improve Orvane and lets us notify you about new versions. Once a day it sends your OS, Mac "
     u"model and app version — no name, email, or transcript content. You can turn it off anytime."},

    // What anything may fail with
    {u"Не хватило памяти.", u"Not enough memory."},
    {u"Внутренняя ошибка программы.", u"Internal error of the program."},

    // Files
    {u"ошибка файловой системы", u"file system error"},
    {u"открыто слишком много файлов", u"too many files are open"},
    {u"слишком длинное имя", u"the name is too long"},
    {u"диск доступен только для чтения", u"the disk is read-only"},
    {u"на диске нет места", u"no space left on the disk"},
    {u"Не удалось прочитать файл", u"Could not read the file"},
    {u"Не удалось записать файл", u"Could not write the file"},

    // Saving
    {u"Не удалось сохранить запись: ", u"Could not save the record: "},
    {u"Не удалось удалить запись: ", u"Could not delete the record: "},
    {u"её файл повреждён", u"its file is damaged"},
    {u"Файл истории слишком велик и пропущен: ", u"A file of the history is too large and was passed over: "},

    // Command line
    {u"Неизвестный параметр: ", u"Unknown option: "},
    {u"Параметру нужно значение: ", u"The option needs a value: "},
    {u"Результат перезаписал бы исходный файл: укажите для --output другой путь.",
     u"The result would overwrite the source file: choose another path for --output."},
    {u"Параметр не принимает значения: ", u"The option takes no value: "},
    {u"Неизвестный формат (есть txt, md, srt и json): ",
     u"Unknown format (there are txt, md, srt and json): "},
    {u"Неизвестный язык (есть %1): ", u"Unknown language (there are %1): "},
    {u"Укажите файл для расшифровки: orvane transcribe ФАЙЛ…",
     u"Name a file to transcribe: orvane transcribe FILE…"},
    {u"Неизвестное действие с историей: ", u"Unknown history action: "},
    {u"--format и --output есть только у history export.", u"Only history export has --format and --output."},
    {u"Укажите запись: её обозначение показывает orvane history list.",
     u"Name a record: orvane history list shows their ids."},
    {u"Укажите новое название записи.", u"Give the record's new title."},
    {u"Задайте вопрос: orvane ask ВОПРОС [ФАЙЛ]", u"Ask a question: orvane ask QUESTION [FILE]"},
    {u"Лишнее слово в команде: ", u"One word too many: "},
    {u"Неизвестная команда: ", u"Unknown command: "},
    {u"Справка: orvane --help", u"Help: orvane --help"},
    {u"Не удалось записать результат: ", u"Could not write the result: "},
    {u"осталось ≈ ", u"left ≈ "},
    {u"Субтитры нескольких файлов не поместятся в один вывод: укажите папку параметром --output.",
     u"Subtitles of several files do not fit into one output: name a folder with --output."},
    {u"Для нескольких файлов --output должен указывать существующую папку.",
     u"For several files --output must name an existing folder."},
    {u"Результаты файлов с одинаковыми именами перезаписали бы друг друга: обработайте их отдельно.",
     u"Results of files with equal names would overwrite each other: transcribe them one by one."},
    {u"речь не найдена", u"no speech found"},
    {u"Не скачано ни одной модели распознавания. Скачайте её: orvane models download base, или положите в "
     u"папку ",
     u"No recognition model is there. Download one: orvane models download base, or put one into the "
     u"folder "},
    {u"В эту папку нельзя записать результат: ", u"The result cannot be written to this folder: "},
    {u"Под это обозначение подходит несколько записей: ", u"Several records match this id: "},
    {u"В истории нет записи ", u"The history has no record "},
    {u"Расшифровка", u"Transcription"},
    {u"Исправление текста", u"Correction"},
    {u"Протокол", u"Protocol"},
    {u"Вопрос", u"Question"},
    {u"Исправленный текст", u"Corrected text"},
    {u"Что сделано", u"What was done"},
    {u"стандартный ввод", u"standard input"},
    {u"Стандартный ввод", u"Standard input"},
    {u"текст больше %1 МБ, это слишком много.", u"the text is larger than %1 MB, which is too much."},
    {u"это не текст в кодировке UTF-8.", u"this is no text in UTF-8."},
    {u"текста нет.", u"there is no text."},
    {u"Для этой команды --output должен указывать файл, а не папку: ",
     u"For this command --output must name a file, not a folder: "},
    {u"Это не языковая модель в формате GGUF: ", u"This is no language model in GGUF form: "},
    {u"Не скачано ни одной языковой модели. Скачайте её (orvane models download ИМЯ) или укажите файл: "
     u"--model "
     u"ПУТЬ",
     u"No language model is downloaded. Download one (orvane models download NAME) or name a file: --model "
     u"PATH"},
    {u"Orvane уже работает.", u"Orvane is already running."},
    {u"Прежний запуск Orvane ещё не завершился, подождите…",
     u"The earlier run of Orvane has not ended yet, please wait…"},
    {u"Окна показать негде: %1. Orvane работает без экрана.",
     u"There is nowhere to show windows: %1. Orvane runs without a display."},
    {u"Неизвестное действие с моделями: ", u"Unknown models action: "},
    {u"Укажите модель: их названия показывает orvane models list.",
     u"Name a model: orvane models list shows their ids."},
    {u"Распознавание речи", u"Speech recognition"},
    {u"Обработка текста", u"Text processing"},
    {u"только английский", u"English only"},
    {u"Рекомендуем", u"Recommended"},
    {u"ГБ", u"GB"},
    {u"МБ/с", u"MB/s"},
    {u"уже скачана", u"is downloaded already"},
    {u"Эта модель не скачана: ", u"This model is not downloaded: "},
    {u"Не удалось удалить модель: ", u"Could not delete the model: "},
    {u"Нет такой модели: ", u"There is no such model: "},
    {uR"(Orvane превращает речь в текст на вашем компьютере.

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
)",
     uR"(Orvane turns speech into text on your computer.

  orvane transcribe FILE|-…       transcribe audio or video; - reads standard input
      --model NAME|PATH           recognition model (by default the one chosen in the settings)
      --language CODE             language of the speech, such as ru or en; auto finds out
      --speakers                  tell two speakers apart by their voices
      --format txt|md|srt|json    form of the result (txt by default)
      --output PATH|-             file or folder for the result (standard output by default)
      --no-history                do not save to the history

  orvane correct [FILE|-]         correct a text's punctuation and slips of the recognition
  orvane email [FILE|-]           make an e-mail of a text
  orvane prompt [FILE|-]          do what a text asks for
  orvane ask QUESTION [FILE|-]    answer a question about a text
  orvane protocol [FILE|-]        write the protocol of a meeting from its text
      --record ID                 take a record's text; correct, ask and protocol store what comes of it
      --model NAME|PATH           language model (by default the one chosen in the settings)
      --output PATH|-             file for the result (standard output by default)

  orvane history [list]           show the history
  orvane history show ID          show a record
  orvane history export ID        give out a record (--format and --output as above)
  orvane history rename ID NAME   rename a record
  orvane history retranscribe ID  transcribe a record anew (--model and --language as above)
  orvane history delete ID        delete a record

  orvane models [list]            show the models: size, memory, what is downloaded
  orvane models download ID…      download models; an interrupted download goes on
  orvane models delete ID…        delete models
  orvane models path [ID…]        show where the models lie
      --repository ADDRESS        where to download from (by default as the build or the settings say)

  orvane                          open the program; with --background only its icon
  orvane open [FILE…]             open the window and transcribe files in it
  orvane toggle                   start a dictation, or finish it and insert its text
  orvane tap                      press the key of dictation: twice within 0.4 s does the same
  orvane start | stop | cancel    the same one by one; cancel inserts nothing
  orvane status                   show the dictation's state

  orvane meeting start            begin to record a meeting
  orvane meeting stop             end the recording and transcribe it
  orvane meeting cancel           abandon the transcription; the audio stays
  orvane meeting [status]         show what the meeting is at
  orvane meeting transcribe       transcribe a recording that a crash left behind
  orvane meeting dismiss          do not offer it any more; the audio stays

  orvane check                    look whether engines, models, microphone, keys and folders work; 1 if not
      --json                      the same for programs

  orvane --version                show the version
  orvane --help                   show this help

Exit status: 0 done, 1 failed, 2 wrong command, 130 interrupted.
)"},

    // Windows
    {u"%1 из %2", u"%1 of %2"},
    {u"Вернуть", u"Undo"},
    {u"Вчера", u"Yesterday"},
    {u"Сегодня", u"Today"},
    {u"Готово", u"Done"},
    {u"Ждёт очереди", u"Waiting"},
    {u"Ждёт, пока освободится движок", u"Waiting until the engine is free"},
    {u"Ищу ответ…", u"Looking for the answer…"},
    {u"МБ", u"MB"},
    {u"Не найдено", u"Not found"},
    {u"Расшифровка удалена", u"Transcript deleted"},
    {u"Удалено расшифровок: %1", u"Transcripts deleted: %1"},
    {u"Удалить выбранные расшифровки (%1)?", u"Delete the selected transcripts (%1)?"},
    {u"Расшифровываю заново…", u"Transcribing again…"},
    {u"Составляю протокол…", u"Writing the protocol…"},
    {u"Скопировано", u"Copied"},
    {u"Сохранено: ", u"Saved: "},
    {u"Спикер", u"Speaker"},
    {u"исправлено", u"corrected"},
    {u"протокол", u"protocol"},
    {u"осталось %1 мин", u"%1 min left"},
    {u"осталось %1 с", u"%1 s left"},
    {u"осталось %1 ч %2 мин", u"%1 h %2 min left"},
    {u"Открыть Orvane", u"Open Orvane"},
    {u"Настройки моделей…", u"Model settings…"},
    {u"Окна Orvane не открываются: программа установлена не полностью.",
     u"Orvane’s windows can’t be opened: the program is not installed completely."},
    {u"Выберите аудио или видео", u"Choose audio or video"},
    {u"Аудио и видео", u"Audio and video"},
    {u"Все файлы", u"All files"},
    {u"Выберите файл модели", u"Choose a model file"},
    {u"Модели", u"Models"},
    {u"Сохранить", u"Save"},
    {u"Выберите папку", u"Choose a folder"},
    {u"Это не файл на этом компьютере. Сначала скопируйте его сюда.",
     u"This is not a file on this computer. Copy it here first."},
};

} // namespace orvane::Localization
