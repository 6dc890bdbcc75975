#include "app/services/AppServices.h"

#include "base/Async.h"
#include "desktop/TextInjector.h"
#include "history/FileRecordSaver.h"
#include "history/LegacyMigration.h"
#include "meeting/MicrophoneSource.h"

#include <QThreadPool>

namespace orvane {

AppServices::AppServices(const Environment &environment)
    : m_folders(environment.folders),
      m_desktop(environment.desktop),
      m_telemetryOptions(environment.telemetry),
      m_defaults(environment.defaultsFile),
      m_engineProcesses(environment.role == Role::Application ? m_folders.engineProcessFile() : QString()),
      m_decoder(m_folders.resources)
{
    LegacyMigration::migrateAppSupportDirectory(m_folders);
    LegacyMigration::migrateDefaults(m_defaults);

    m_settings = std::make_unique<AppSettings>(m_defaults);
    if (const auto &desktop = m_desktop) {
        m_updates = std::make_unique<UpdateChecker>(m_defaults, desktop->updates, desktop->openFile,
                                                    m_folders.temporary, UpdateChecker::Options());
    }
    m_models = std::make_unique<ModelManager>(m_folders.models(), environment.repository);
    m_history = std::make_unique<HistoryStore>(m_folders);
    m_whisperEngine =
        std::make_unique<WhisperServerEngine>(engineSearch(), m_engineProcesses, m_folders.temporary);
    m_pipeline = std::make_unique<TranscriptPipeline>(*m_whisperEngine, m_decoder);
    m_correctionModels =
        std::make_unique<CorrectionModelManager>(m_folders.correctionModels(), environment.repository);

    if (environment.repository.address.isEmpty()) {
        QObject::connect(m_settings.get(), &AppSettings::modelRepositoryChanged, m_settings.get(),
                         [this] { useStoredRepository(); });
        useStoredRepository();
    }

    // An engine has the old file in memory.
    QObject::connect(m_models.get(), &ModelManager::fileReplaced, m_models.get(),
                     [this] { m_whisperEngine->requestRestart(); });
    QObject::connect(m_correctionModels.get(), &CorrectionModelManager::fileReplaced,
                     m_correctionModels.get(), [this] {
                         if (m_corrector)
                             m_corrector->local().requestRestart();
                     });

    if (m_desktop) {
        const auto nameTerminals = [this] {
            m_desktop->injector.setTerminalClasses(m_settings->terminalClasses());
        };
        QObject::connect(m_settings.get(), &AppSettings::terminalClassesChanged, m_settings.get(),
                         nameTerminals);
        nameTerminals();
    }
    if (environment.role == Role::Application) {
        QObject::connect(m_settings.get(), &AppSettings::shareAnonymousStatsChanged, m_settings.get(),
                         [this] { telemetry().pingIfEnabled(); });
    }
}

AppServices::~AppServices()
{
    m_recordProcessor.reset(); // uses the transcriber
    // What is being prepared for the engine ends, and so does the work of these on other threads, which uses
    // the decoder until it has.
    m_whisperEngine->stop();
    m_meeting.reset();
    m_transcriber.reset();
    m_pipeline.reset();
    waitForDone(longWorkPool());
    waitForDone(*QThreadPool::globalInstance());
}

void AppServices::useStoredRepository()
{
    m_models->setRepository(m_settings->modelRepository());
    m_correctionModels->setRepository(m_settings->modelRepository());
}

TranscriptionService &AppServices::transcriber()
{
    if (!m_transcriber) {
        const auto save = [this](const TranscriptionService::Request &request, const Transcript &transcript) {
            return FileRecordSaver(*m_history)
                .save({.path = request.audioPath,
                       .title = request.title,
                       .segments = transcript.segments,
                       .text = joinedText(transcript.segments),
                       .modelID = request.model.id,
                       .languageCode = request.language,
                       .length = transcript.length,
                       .remark = transcript.damageText()});
        };
        m_transcriber = std::make_unique<TranscriptionService>(TranscriptionService::Collaborators{
            .engine = *m_whisperEngine, .pipeline = *m_pipeline, .turns = m_turns, .saveRecord = save});
    }
    return *m_transcriber;
}

TextCorrectionService &AppServices::corrector()
{
    if (!m_corrector) {
        m_corrector = std::make_unique<TextCorrectionService>(
            *m_settings, *m_correctionModels,
            std::make_unique<LocalLLMEngine>(engineSearch(), m_engineProcesses),
            BuiltInModel::ofThisSystem());
    }
    return *m_corrector;
}

RecordProcessor &AppServices::recordProcessor()
{
    if (!m_recordProcessor) {
        m_recordProcessor = std::make_unique<RecordProcessor>(
            RecordProcessor::Collaborators{.history = *m_history,
                                           .corrector = corrector(),
                                           .transcriber = transcriber(),
                                           .recordingsFolder = m_folders.recordings()});
    }
    return *m_recordProcessor;
}

DictationController *AppServices::dictation()
{
    if (!m_dictation && m_desktop) {
        m_battery = Battery::ofThisMachine();
        m_dictation = std::make_unique<DictationController>(
            DictationController::Collaborators{.models = *m_models,
                                               .settings = *m_settings,
                                               .defaults = m_defaults,
                                               .corrector = corrector(),
                                               .engine = *m_whisperEngine,
                                               .turns = m_turns,
                                               .battery = *m_battery,
                                               .injector = m_desktop->injector,
                                               .indicator = m_desktop->indicator,
                                               .guidance = m_desktop->guidance},
            m_folders.resources);
    }
    return m_dictation.get();
}

MeetingTranscriber &AppServices::meeting()
{
    if (!m_meeting) {
        const auto microphone = [modules = m_folders.resources] {
            return std::make_unique<MicrophoneSource>(modules);
        };
        m_meeting =
            std::make_unique<MeetingTranscriber>(MeetingTranscriber::Collaborators{.models = *m_models,
                                                                                   .settings = *m_settings,
                                                                                   .history = *m_history,
                                                                                   .pipeline = *m_pipeline,
                                                                                   .turns = m_turns,
                                                                                   .makeSource = microphone},
                                                 m_folders.recordings());
    }
    return *m_meeting;
}

Telemetry &AppServices::telemetry()
{
    if (!m_telemetry) {
        m_telemetry = std::make_unique<Telemetry>(*m_settings, m_defaults, DeviceSources::ofThisMachine(),
                                                  m_telemetryOptions);
    }
    return *m_telemetry;
}

} // namespace orvane
