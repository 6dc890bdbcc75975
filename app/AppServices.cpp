#include "app/AppServices.h"

#include "app/base/Async.h"
#include "history/FileRecordSaver.h"
#include "history/LegacyMigration.h"

#include <QThreadPool>

namespace orvane {

AppServices::AppServices(Role role, const StandardFolders &folders, const QString &defaultsFile,
                         const ModelRepository &repository)
    : m_folders(folders),
      m_defaults(defaultsFile),
      m_engineProcesses(role == Role::Application ? folders.engineProcessFile() : QString()),
      m_decoder(folders.resources)
{
    LegacyMigration::migrateAppSupportDirectory(m_folders);
    LegacyMigration::migrateDefaults(m_defaults);

    m_settings = std::make_unique<AppSettings>(m_defaults);
    m_models = std::make_unique<ModelManager>(m_folders.models(), repository);
    m_history = std::make_unique<HistoryStore>(m_folders);
    m_whisperEngine = std::make_unique<WhisperServerEngine>(
        EngineServer::SearchPath{.resources = m_folders.resources}, m_engineProcesses, m_folders.temporary);
    m_correctionModels = std::make_unique<CorrectionModelManager>(m_folders.correctionModels(), repository);
}

AppServices::~AppServices()
{
    // It tells its work on other threads to stop; that work uses the decoder until it has.
    m_transcriber.reset();
    waitForDone(*QThreadPool::globalInstance());
}

TranscriptionService &AppServices::transcriber()
{
    if (!m_transcriber) {
        const auto save = [this](const TranscriptionService::Request &request,
                                 const QList<DisplaySegment> &segments, const QString &transcript) {
            return FileRecordSaver(*m_history)
                .save({.path = request.audioPath,
                       .segments = segments,
                       .text = transcript,
                       .modelID = request.model.id,
                       .languageCode = request.language});
        };
        m_transcriber = std::make_unique<TranscriptionService>(TranscriptionService::Collaborators{
            .engine = *m_whisperEngine, .decoder = m_decoder, .saveRecord = save, .labelSpeakers = {}});
    }
    return *m_transcriber;
}

} // namespace orvane
