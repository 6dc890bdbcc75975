#include "ui/presentation/Desk.h"

#include "app/services/AppServices.h"
#include "base/localization/Localization.h"
#include "recognition/TranscriptionService.h"
#include "settings/AppSettings.h"
#include "ui/presentation/FileChooser.h"

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orvane {

namespace {

/// Waits for the engine's turn first: a queue goes on behind a meeting.
QCoro::Task<std::optional<QUuid>> transcribed(TranscriptionService *transcriber, const EngineTurns *turns,
                                              std::optional<TranscriptionService::Request> request,
                                              std::stop_token stop)
{
    if (!request)
        throw Error(Localization::text(u"Нет скачанных моделей"));
    static_cast<void>(co_await turns->wait(stop)); // let go of at once: the service takes it itself
    const std::stop_callback cancel(stop, [transcriber] { transcriber->cancel(); });
    const auto result = co_await transcriber->transcribe(*request);
    co_return result.savedID;
}

} // namespace

Desk::Desk(AppServices &services, const KeyTap &keys, FileChooser &files, QObject *parent)
    : QObject(parent),
      m_settings(services.settings()),
      m_settingsPage(u"general"_s),
      m_saver(services.history(), files, m_notices),
      m_recognition(services.settings(), services.models()),
      m_history(services.history(), m_saver, m_notices),
      m_record({.history = services.history(),
                .saver = m_saver,
                .notices = m_notices,
                .recordingsFolder = services.folders().recordings(),
                .work = {.processor = services.recordProcessor(),
                         .corrector = services.corrector(),
                         .recognition = m_recognition}}),
      m_queue(transcriberOf(services.transcriber(), services.turns(), files)),
      m_meeting(services.meeting(),
                MeetingDesk::Machine::ofUser(services.folders().resources, services.folders().recordings())),
      m_activity({.settings = services.settings(),
                  .models = services.models(),
                  .correctionModels = services.correctionModels(),
                  .transcriber = services.transcriber(),
                  .meeting = services.meeting(),
                  .processor = services.recordProcessor()}),
      m_general(services.settings(), keys, *services.updates()),
      m_repository(services.settings(), services.models()),
      m_speechModels({.settings = services.settings(),
                      .models = services.models(),
                      .engine = services.whisperEngine(),
                      .chooser = files}),
      m_languageModels({.settings = services.settings(),
                        .models = services.correctionModels(),
                        .corrector = services.corrector(),
                        .chooser = files}),
      m_prompt(services.settings()),
      m_systemCheck({.settings = services.settings(),
                     .models = services.models(),
                     .correctionModels = services.correctionModels(),
                     .engine = services.whisperEngine(),
                     .corrector = services.corrector(),
                     .turns = services.turns(),
                     .folders = services.folders(),
                     .keys = &keys,
                     .listeningTime = 4s}),
      m_check(m_systemCheck),
      m_firstStart({.settings = services.settings(),
                    .models = services.models(),
                    .catalogue = m_speechModels,
                    .keys = keys,
                    .moduleFolder = services.folders().resources})
{
    m_page = m_firstStart.isDue() ? u"first"_s : u"file"_s;
    connect(&m_firstStart, &FirstStart::finished, this, [this] { setPage(u"file"_s); });
    connect(&m_meeting, &MeetingDesk::refused, &m_notices, &Notices::show);
    connect(&m_activity, &Activity::refused, &m_notices, &Notices::show);
    connect(&m_settings, &AppSettings::interfaceLanguageChanged, &m_history, &HistoryList::relabel);
    connect(&m_settings, &AppSettings::interfaceLanguageChanged, &m_record, &OpenRecord::relabel);
    connect(&m_settings, &AppSettings::interfaceLanguageChanged, &m_queue, &FileQueue::relabel);
    connect(&m_settings, &AppSettings::interfaceLanguageChanged, &m_meeting, &MeetingDesk::relabel);
    connect(&m_settings, &AppSettings::interfaceLanguageChanged, &m_check, &Check::relabel);
    HistoryStore &history = services.history();
    connect(&history, &HistoryStore::lastErrorChanged, &m_notices, [this, &history] {
        if (!history.lastError().isEmpty())
            m_notices.show(history.lastError());
    });
    followRecord();
    followQueue(services.transcriber());
}

void Desk::followRecord()
{
    connect(&m_history, &HistoryList::opened, this, [this](const QUuid &id) {
        m_record.open(id, m_history.search().trimmed());
        setPage(u"record"_s);
    });
    connect(&m_history, &HistoryList::removed, this, [this](const QUuid &id) {
        if (QUuid(m_record.recordId()) == id)
            closeRecord();
    });
    connect(&m_record, &OpenRecord::gone, this, [this](const QString &reason) {
        closeRecord();
        if (!reason.isEmpty())
            m_notices.show(reason);
    });
    connect(&m_record, &RecordWork::settingsRequested, this, [this] { showSettings(u"correction"_s); });
}

void Desk::followQueue(TranscriptionService &transcriber)
{
    connect(&m_queue, &FileQueue::finished, this, [this](const QUuid &onlyRecord) {
        // The one result that somebody waits for; of several each is opened from the queue.
        if (m_page == "file"_L1 && !onlyRecord.isNull())
            openRecord(onlyRecord.toString());
    });
    const auto showProgress = [this, &transcriber] {
        m_queue.setProgress(transcriber.statusText(), transcriber.progress(), transcriber.remainingMs());
    };
    connect(&transcriber, &TranscriptionService::progressChanged, this, showProgress);
    connect(&transcriber, &TranscriptionService::statusTextChanged, this, showProgress);
}

FileQueue::Transcriber Desk::transcriberOf(TranscriptionService &transcriber, const EngineTurns &turns,
                                           FileChooser &files) const
{
    const auto choose = [this, &transcriber, &files] {
        if (const auto request = m_recognition.request({}))
            transcriber.prewarm(request->model.path); // while the user looks for the file
        return files.media();
    };
    return {.transcribe =
                [this, &transcriber, &turns](const QString &path, std::stop_token stop) {
                    return orvane::transcribed(&transcriber, &turns, m_recognition.request(path), stop);
                },
            .choose = choose};
}

void Desk::setPage(const QString &page)
{
    if (std::exchange(m_page, page) != page)
        Q_EMIT pageChanged();
}

void Desk::setSettingsPage(const QString &page)
{
    if (std::exchange(m_settingsPage, page) != page)
        Q_EMIT settingsPageChanged();
}

QObject *Desk::settings() const
{
    return &m_settings;
}

void Desk::openRecord(const QString &id)
{
    m_record.open(QUuid(id), {});
    setPage(u"record"_s);
}

void Desk::closeRecord()
{
    m_record.open({}, {});
    if (m_page == "record"_L1)
        setPage(u"file"_s);
}

void Desk::showSettings(const QString &page)
{
    if (!page.isEmpty())
        setSettingsPage(page);
    Q_EMIT settingsRequested();
}

void Desk::open(const QList<QUrl> &files)
{
    setPage(u"file"_s);
    m_queue.add(files);
}

} // namespace orvane
