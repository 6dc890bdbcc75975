#include "models/CorrectionModelManager.h"

#include <QDir>

namespace orvane {

namespace {

QString made(const QString &folder)
{
    QDir().mkpath(folder);
    return folder;
}

} // namespace

CorrectionModelManager::CorrectionModelManager(const QString &directory, ModelRepository repository,
                                               QObject *parent)
    : ModelCatalog(made(directory), std::move(repository), parent)
{}

} // namespace orvane
