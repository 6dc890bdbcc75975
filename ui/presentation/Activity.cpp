#include "ui/presentation/Activity.h"

#include "base/localization/Localization.h"
#include "meeting/MeetingTranscriber.h"
#include "models/CorrectionModelManager.h"
#include "models/ModelManager.h"
#include "processing/RecordProcessor.h"
#include "recognition/TranscriptionService.h"
#include "settings/AppSettings.h"
#include "ui/presentation/Spans.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orvane {

using Localization::text;

namespace {

/// The page of meetings shows all of them.
constexpr qsizetype shownLeftovers = 2;

/// Nothing done yet is nothing known yet: a bar at its beginning says no more.
double shown(double progress)
{
    return progress > 0 ? progress : -1;
}

} // namespace

Activity::Activity(const Collaborators &services, QObject *parent)
    : RowModel({"key", "title", "detail", "progress", "canCancel", "cancelText", "canTranscribe"}, parent),
      m_services(services)
{
    m_soon.setSingleShot(true);
    m_soon.setInterval(0);
    m_soon.callOnTimeout(this, &Activity::show);
    const auto showSoon = [this] { m_soon.start(); };
    for (ModelCatalogManager *models :
         std::initializer_list<ModelCatalogManager *>{&services.models, &services.correctionModels})
        connect(models, &ModelCatalogManager::progressChanged, this, showSoon);
    const TranscriptionService &transcriber = services.transcriber;
    connect(&transcriber, &TranscriptionService::isWorkingChanged, this, showSoon);
    connect(&transcriber, &TranscriptionService::progressChanged, this, showSoon);
    connect(&transcriber, &TranscriptionService::statusTextChanged, this, showSoon);
    const MeetingTranscriber &meeting = services.meeting;
    connect(&meeting, &MeetingTranscriber::stateChanged, this, showSoon);
    connect(&meeting, &MeetingTranscriber::progressChanged, this, showSoon);
    connect(&meeting, &MeetingTranscriber::statusTextChanged, this, showSoon);
    connect(&meeting, &MeetingTranscriber::leftoversChanged, this, showSoon);
    connect(&services.processor, &RecordProcessor::recordChanged, this, showSoon);
    connect(&services.processor, &RecordProcessor::progressChanged, this, showSoon);
    connect(&services.settings, &AppSettings::interfaceLanguageChanged, this, showSoon);
    show();
}

void Activity::cancel(int index)
{
    if (const std::function<void()> cancel = m_entries.value(index).cancel)
        cancel();
}

void Activity::transcribe(int index)
{
    if (const std::function<void()> transcribe = m_entries.value(index).transcribe)
        transcribe();
}

void Activity::show()
{
    m_entries.clear();
    addTranscription();
    addMeeting();
    addProcessing();
    addDownloads(m_services.models);
    addDownloads(m_services.correctionModels);
    addLeftovers();
    QList<QVariantMap> rows;
    for (const Entry &entry : std::as_const(m_entries)) {
        rows.append({{u"key"_s, entry.key},
                     {u"title"_s, entry.title},
                     {u"detail"_s, entry.detail},
                     {u"progress"_s, entry.progress},
                     {u"canCancel"_s, entry.cancel != nullptr},
                     {u"cancelText"_s, entry.cancelText},
                     {u"canTranscribe"_s, entry.transcribe != nullptr}});
    }
    setRows(rows);
}

void Activity::addTranscription()
{
    TranscriptionService &transcriber = m_services.transcriber;
    if (!transcriber.isWorking())
        return;
    m_entries.append(
        {.key = u"file"_s,
         .title = text(u"Расшифровка файла"),
         .detail = Spans::joined({transcriber.statusText(), Spans::remaining(transcriber.remainingMs())}),
         .progress = shown(transcriber.progress()),
         .cancelText = text(u"Отменить"),
         .cancel = [&transcriber] { transcriber.cancel(); }});
}

void Activity::addMeeting()
{
    MeetingTranscriber &meeting = m_services.meeting;
    if (!meeting.isTranscribing())
        return;
    m_entries.append(
        {.key = u"meeting"_s,
         .title = text(u"Расшифровка совещания"),
         .detail = Spans::joined({meeting.statusText(), Spans::remaining(meeting.remainingMs())}),
         .progress = shown(meeting.progress()),
         .cancelText = text(u"Прервать расшифровку — аудиозапись совещания останется на диске"),
         .cancel = [&meeting] { meeting.cancelTranscription(); }});
}

void Activity::addProcessing()
{
    RecordProcessor &processor = m_services.processor;
    if (processor.record().isNull())
        return;
    const bool isRecognised = m_services.transcriber.isBusyDetached();
    m_entries.append({.key = u"processing"_s,
                      .title = isRecognised ? text(u"Повторная расшифровка") : text(u"Обработка текста"),
                      .detail = Spans::remaining(processor.remainingMs()),
                      .progress = shown(processor.progress()),
                      .cancelText = text(u"Отменить"),
                      .cancel = [&processor] { processor.cancel(); }});
}

void Activity::addDownloads(ModelCatalogManager &models)
{
    for (const QString &id : models.progress().keys()) {
        const DownloadProgress reached = models.downloadProgress(id);
        m_entries.append({.key = u"download "_s + id,
                          .title = text(u"Загрузка %1").arg(models.displayName(id)),
                          .detail = Spans::download(reached),
                          .progress = reached.totalBytes > 0 ? reached.fraction() : -1,
                          .cancelText = text(u"Отменить загрузку и удалить скачанное"),
                          .cancel = [&models, id] { models.cancelDownload(id); }});
    }
}

void Activity::addLeftovers()
{
    MeetingTranscriber &meeting = m_services.meeting;
    if (meeting.isTranscribing())
        return; // one of them may be what is transcribed
    for (const RecordedMeeting &leftover :
         meeting.leftovers().first(std::min<qsizetype>(shownLeftovers, meeting.leftovers().size()))) {
        const QString name = leftover.audioFileName;
        m_entries.append(
            {.key = u"leftover "_s + name,
             .title = text(u"Нерасшифрованная запись"),
             .detail = Spans::joined({meetingTitle(leftover.startedAt), Spans::clock(leftover.durationMs)}),
             .cancelText = text(u"Больше не предлагать — аудиозапись останется на диске"),
             .cancel = [&meeting, name] { meeting.dismissLeftover(name); },
             .transcribe = [this, name] { transcribeLeftover(name); }});
    }
}

void Activity::transcribeLeftover(const QString &name)
{
    MeetingTranscriber &meeting = m_services.meeting;
    if (const QString reason = meeting.leftoverRefusal(); !reason.isEmpty())
        Q_EMIT refused(reason);
    else
        meeting.transcribeLeftover(name);
}

} // namespace orvane
