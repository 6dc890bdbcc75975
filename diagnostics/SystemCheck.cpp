#include "diagnostics/SystemCheck.h"

#include "base/Async.h"
#include "diagnostics/DesktopChecks.h"
#include "diagnostics/EngineChecks.h"
#include "diagnostics/FileChecks.h"
#include "models/CorrectionModelManager.h"
#include "models/ModelManager.h"
#include "settings/AppSettings.h"

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

template <typename Model>
void addModels(const ModelCatalog<Model> &catalog, QList<FileChecks::Model> &models)
{
    for (const Model &model : catalog.downloadedModels()) {
        models.append({.name = model.displayName, .path = catalog.localPath(model), .magic = Model::magic()});
    }
}

QList<FileChecks::Model> modelsOf(const SystemCheck::Collaborators &services)
{
    QList<FileChecks::Model> models;
    addModels(services.models, models);
    addModels(services.correctionModels, models);
    return models;
}

QList<FileChecks::Folder> foldersOf(const StandardFolders &folders)
{
    return {{.path = folders.orvane()},
            {.path = folders.history(), .isPrivate = true},
            {.path = folders.recordings(), .isPrivate = true},
            {.path = folders.models()},
            {.path = folders.correctionModels()}};
}

QCoro::Task<CheckResult> pasted()
{
    co_return DesktopChecks::paste();
}

} // namespace

SystemCheck::SystemCheck(const Collaborators &collaborators, QObject *parent)
    : SystemCheck(
          collaborators,
          std::make_shared<MicrophoneCheck>(collaborators.folders.resources, collaborators.listeningTime),
          parent)
{}

SystemCheck::SystemCheck(const Collaborators &collaborators, const Microphone &microphone, QObject *parent)
    : CheckRun(checks(collaborators, microphone), parent),
      m_microphone(microphone)
{}

SystemCheck::~SystemCheck() = default;

QList<CheckRun::Check> SystemCheck::checks(const Collaborators &services, const Microphone &microphone)
{
    const EngineChecks::Speech speech{.engine = &services.engine,
                                      .turns = &services.turns,
                                      .models = &services.models,
                                      .settings = &services.settings};
    const EngineChecks::Language language{.corrector = &services.corrector,
                                          .models = &services.correctionModels,
                                          .settings = &services.settings};
    const QString folder = services.folders.orvane();
    const QList<FileChecks::Folder> folders = foldersOf(services.folders);
    return {
        {.id = u"speech-engine"_s,
         .name = u"Движок распознавания",
         .run = [speech](std::stop_token stop) { return EngineChecks::speech(speech, std::move(stop)); }},
        {.id = u"language-engine"_s,
         .name = u"Языковой движок",
         .run =
             [language](std::stop_token stop) { return EngineChecks::language(language, std::move(stop)); }},
        {.id = u"models"_s,
         .name = u"Файлы моделей",
         .run =
             [services](const std::stop_token &) {
                 return offMainThread([models = modelsOf(services)] { return FileChecks::models(models); });
             }},
        {.id = u"microphone"_s,
         .name = u"Микрофон",
         .run = [microphone](std::stop_token stop) { return microphone->run(std::move(stop)); }},
        {.id = u"keys"_s,
         .name = u"Клавиши диктовки",
         .run =
             [services](std::stop_token stop) {
                 return DesktopChecks::keys(services.keys, services.settings.dictationTrigger(),
                                            std::move(stop));
             }},
        {.id = u"paste"_s,
         .name = u"Вставка текста",
         .run = [](const std::stop_token &) { return pasted(); }},
        {.id = u"disk"_s,
         .name = u"Место на диске",
         .run =
             [folder](const std::stop_token &) {
                 return offMainThread([folder] { return FileChecks::disk(folder); });
             }},
        {.id = u"folders"_s,
         .name = u"Папки данных",
         .run =
             [folders](const std::stop_token &) {
                 return offMainThread([folders] { return FileChecks::folders(folders); });
             }},
    };
}

} // namespace orvane
