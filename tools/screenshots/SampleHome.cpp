#include "tools/screenshots/SampleHome.h"

#include "audio/SampleRate.h"
#include "audio/WavFileWriter.h"
#include "history/TranscriptRecord.h"
#include "meeting/RecordingsFolder.h"
#include "models/CorrectionModel.h"
#include "models/WhisperModel.h"

#include <QDir>

#include <vector>

using namespace Qt::StringLiterals;
using namespace orvane;

namespace {

struct Line
{
    qint64 speaker;
    const char16_t *text;
};

constexpr Line lines[] = {
    {1, u"Доброе утро. Давайте начнём с бюджета на первый квартал, потом перейдём к срокам."},
    {2, u"Бюджет согласован, но по лицензиям есть вопрос: нам нужно ещё два места."},
    {1, u"Два места — это в пределах резерва. Анна, подготовьте, пожалуйста, заявку до пятницы."},
    {2, u"Хорошо, до пятницы сделаю. И ещё: подрядчик просит перенести приёмку на неделю."},
    {1, u"На неделю — это двадцать восьмое. Меня устраивает, если отчёт придёт заранее."},
    {2, u"Отчёт они обещали прислать двадцать пятого."},
    {1, u"Тогда фиксируем: приёмка двадцать восьмого, отчёт двадцать пятого."},
    {2, u"Принято. Запишу в протокол."},
    {1, u"Следующий вопрос — переезд архива на новый сервер."},
    {2, u"Копирование закончено, осталось проверить контрольные суммы."},
};

TranscriptRecord recordOf(TranscriptKind kind, const QString &title, qint64 minutesAgo, qint64 durationMs)
{
    TranscriptRecord record;
    record.kind = kind;
    record.title = title;
    record.createdAt = QDateTime::currentDateTimeUtc().addSecs(-60 * minutesAgo);
    record.modelID = u"large-v3-turbo"_s;
    record.languageCode = u"ru"_s;
    record.durationMs = durationMs;
    record.text = u"Сегодня мы разберём, как тепло переходит от одного тела к другому."_s;
    record.segments = {{.start = 0, .end = durationMs, .text = record.text, .speaker = {}}};
    return record;
}

TranscriptRecord talk()
{
    TranscriptRecord record =
        recordOf(TranscriptKind::Meeting, u"Совещание · 21 ноября, 10:02"_s, 30, 2'892'000);
    record.id = SampleHome::meeting();
    record.segments.clear();
    record.text.clear();
    qint64 start = 0;
    for (const Line &line : lines) {
        const QString text = QString::fromUtf16(line.text);
        const qint64 end = start + text.size() * 90;
        record.segments.append({.start = start, .end = end, .text = u' ' + text, .speaker = line.speaker});
        record.text += u' ' + text;
        start = end;
    }
    record.corrected =
        QString(record.text).replace(u"и ещё"_s, u"а ещё"_s).replace(u"Принято."_s, u"Принято!"_s);
    record.summary = u"## Кратко\n\nСогласован бюджет первого квартала, приёмка перенесена на неделю.\n\n"
                     u"## Задачи\n\n- Анна: заявка на два места — до пятницы\n"
                     u"- Подрядчик: отчёт — 25 ноября\n- Приёмка — 28 ноября"_s;
    record.events = QList<RecordEvent>{
        {.kind = RecordEvent::Kind::Transcription, .prompt = {}, .text = record.text.trimmed()},
        {.kind = RecordEvent::Kind::Correction, .prompt = {}, .text = record.corrected->trimmed()},
        {.kind = RecordEvent::Kind::Summary, .prompt = {}, .text = *record.summary},
        {.kind = RecordEvent::Kind::Prompt,
         .prompt = u"Кто за что отвечает?"_s,
         .text =
             u"**Анна** готовит заявку на два места до пятницы. **Подрядчик** присылает отчёт 25 ноября."_s}};
    return record;
}

} // namespace

SampleHome::SampleHome()
{
    const StandardFolders folders = environment().folders;
    for (const QString &folder : {folders.history(), folders.models(), folders.correctionModels()})
        QDir().mkpath(folder);
    constexpr qint64 day = 24 * 60;
    QList<TranscriptRecord> records = {
        talk(), recordOf(TranscriptKind::File, u"Интервью с заказчиком"_s, 75, 760'000),
        recordOf(TranscriptKind::File, u"Лекция 4. Теплообмен"_s, day + 40, 5'467'000),
        recordOf(TranscriptKind::File, u"Заметка в машине"_s, day + 90, 125'000),
        recordOf(TranscriptKind::Meeting, u"Совещание · 12 ноября, 15:30"_s, 9 * day, 3'310'000)};
    records[1].corrected = records[1].text;
    for (const TranscriptRecord &record : records)
        test::put(folders.history() + u'/' + QString::fromLatin1(recordFileName(record.id)), record.json());
    for (const WhisperModel &model : WhisperModel::catalog()) {
        if (model.id == "base"_L1 || model.id == "large-v3-turbo"_L1)
            test::put(folders.models() + u'/' + model.fileName, WhisperModel::magic());
    }
    const CorrectionModel &language = CorrectionModel::catalog().constFirst();
    test::put(folders.correctionModels() + u'/' + language.fileName, CorrectionModel::magic());
}

QUuid SampleHome::meeting()
{
    return QUuid(u"{6f1d3b1e-52d9-4a3f-9f0c-1b6a6f7d2c11}"_s);
}

void SampleHome::leaveRecordings() const
{
    RecordingsFolder folder(environment().folders.recordings());
    const QDateTime morning(QDate::currentDate(), QTime(10, 2));
    for (const int minutes : {48, 12}) {
        const RecordedMeeting meeting = folder.create({.audioFileName = {},
                                                       .modelID = {},
                                                       .languageCode = u"ru"_s,
                                                       .startedAt = morning.addSecs(-60 * minutes)});
        WavFileWriter audio(environment().folders.recordings() + u'/' + meeting.audioFileName, sampleRate);
        const std::vector<float> minute(size_t(60) * sampleRate);
        for (int i = 0; i < minutes; ++i)
            audio.append(minute);
        audio.finalize();
    }
}
