#pragma once

#include "audio/AudioDecoder.h"
#include "base/StandardFolders.h"
#include "correction/TextCorrectionService.h"
#include "dictation/Battery.h"
#include "dictation/DictationController.h"
#include "engine/EngineProcessRegistry.h"
#include "history/HistoryStore.h"
#include "meeting/MeetingTranscriber.h"
#include "models/CorrectionModelManager.h"
#include "models/ModelManager.h"
#include "processing/RecordProcessor.h"
#include "recognition/TranscriptionService.h"
#include "recognition/WhisperServerEngine.h"
#include "settings/AppSettings.h"
#include "settings/UserDefaults.h"
#include "update/Telemetry.h"
#include "update/UpdateChecker.h"

#include <memory>
#include <optional>

namespace orvane {

/// The composition root: makes the long-lived services, hands each its collaborators, and owns them
/// all until the program ends. Services that most runs never use are made on first access. No engine
/// process is started here. Main thread; one instance a process.
class AppServices
{
public:
    /// Who runs the services. Only the application keeps the file of engine processes: a command line
    /// beside it must neither see nor end the application's engines.
    enum class Role { Application, CommandLine };

    /// The user's desktop as the services need it. Only an application with a display has one. Outlives the
    /// services.
    struct Desktop
    {
        UpdatePresenter &updates;
        Guidance &guidance;
        DictationIndicator &indicator;
        TextInjector &injector;
        UpdateChecker::Opener openFile;
    };

    /// What the services work in.
    struct Environment
    {
        Role role = Role::CommandLine;
        StandardFolders folders = StandardFolders::ofUser();
        QString defaultsFile = UserDefaults::standardFile();
        /// Where models are downloaded from; without an address as the user's settings say.
        ModelRepository repository = ModelRepository::ofBuild();
        /// Where device reports go to.
        Telemetry::Options telemetry = {};
        std::optional<Desktop> desktop = std::nullopt;
    };

    /// Carries over the earlier product's data first, so that every service finds it.
    explicit AppServices(const Environment &environment);
    ~AppServices();
    Q_DISABLE_COPY_MOVE(AppServices)

    [[nodiscard]] const StandardFolders &folders() const { return m_folders; }
    [[nodiscard]] UserDefaults &defaults() { return m_defaults; }
    [[nodiscard]] AppSettings &settings() { return *m_settings; }
    /// Null without a desktop, as every outcome of it is shown.
    [[nodiscard]] UpdateChecker *updates() { return m_updates.get(); }
    [[nodiscard]] ModelManager &models() { return *m_models; }
    [[nodiscard]] HistoryStore &history() { return *m_history; }
    [[nodiscard]] WhisperServerEngine &whisperEngine() { return *m_whisperEngine; }
    [[nodiscard]] CorrectionModelManager &correctionModels() { return *m_correctionModels; }
    /// Whose turn it is with the engine.
    [[nodiscard]] const EngineTurns &turns() const { return m_turns; }
    [[nodiscard]] EngineProcessRegistry &engineProcesses() { return m_engineProcesses; }

    /// Made on first access, the same object afterwards.
    [[nodiscard]] TranscriptionService &transcriber();
    /// As above.
    [[nodiscard]] MeetingTranscriber &meeting();
    /// As above.
    [[nodiscard]] TextCorrectionService &corrector();
    /// As above.
    [[nodiscard]] RecordProcessor &recordProcessor();
    /// As above; null without a desktop, as its text goes into other programs' windows.
    [[nodiscard]] DictationController *dictation();
    /// As above. The application has it report when the user turns sharing on.
    [[nodiscard]] Telemetry &telemetry();

private:
    void useStoredRepository();
    [[nodiscard]] EngineServer::SearchPath engineSearch() const { return {.resources = m_folders.resources}; }

    // In the order of construction, which is the order of dependence.
    const StandardFolders m_folders;
    const std::optional<Desktop> m_desktop;
    const Telemetry::Options m_telemetryOptions;
    UserDefaults m_defaults;
    EngineProcessRegistry m_engineProcesses;
    AudioDecoder m_decoder;
    EngineTurns m_turns;
    std::unique_ptr<AppSettings> m_settings;
    std::unique_ptr<UpdateChecker> m_updates;
    std::unique_ptr<ModelManager> m_models;
    std::unique_ptr<HistoryStore> m_history;
    std::unique_ptr<WhisperServerEngine> m_whisperEngine;
    std::unique_ptr<TranscriptPipeline> m_pipeline;
    std::unique_ptr<CorrectionModelManager> m_correctionModels;
    std::unique_ptr<TranscriptionService> m_transcriber;
    std::unique_ptr<TextCorrectionService> m_corrector;
    std::unique_ptr<RecordProcessor> m_recordProcessor;
    std::unique_ptr<Battery> m_battery;
    std::unique_ptr<DictationController> m_dictation;
    std::unique_ptr<MeetingTranscriber> m_meeting;
    std::unique_ptr<Telemetry> m_telemetry;
};

} // namespace orvane
