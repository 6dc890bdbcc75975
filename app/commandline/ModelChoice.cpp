#include "app/commandline/ModelChoice.h"

#include "app/services/AppServices.h"
#include "base/localization/Localization.h"

#include <QFile>
#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace orvane::ModelChoice {

namespace {

ModelFile named(const ModelCatalogManager &models, const QString &name)
{
    if (models.downloaded().contains(name))
        return {.id = name, .path = models.localPath(name)};
    if (QFileInfo(name).isFile())
        return ModelFile::atPath(name);
    throw Error((models.localPath(name).isEmpty() ? Localization::text(u"Нет такой модели: ")
                                                  : Localization::text(u"Эта модель не скачана: ")) +
                name);
}

} // namespace

ModelFile recognitionModel(AppServices &services, const QString &name)
{
    const ModelManager &models = services.models();
    if (!name.isEmpty())
        return named(models, name);
    if (const auto chosen = models.resolved(services.settings().selectedModelID()))
        return {.id = chosen->id, .path = models.localPath(*chosen)};
    throw Error(Localization::text(u"Не скачано ни одной модели распознавания. Скачайте её: orvane models "
                                   u"download base, или положите в папку ") +
                models.modelsDirectory());
}

QString languageModelPath(AppServices &services, const QString &name)
{
    if (name.isEmpty())
        return {};
    const ModelFile model = named(services.correctionModels(), name);
    // The engine would only say that it ended.
    QFile file(model.path);
    if (!file.open(QIODevice::ReadOnly) || file.read(4) != "GGUF")
        throw Error(Localization::text(u"Это не языковая модель в формате GGUF: ") + name);
    return model.path;
}

} // namespace orvane::ModelChoice
