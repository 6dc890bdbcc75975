// engine-starter RESOURCES: loads the engine of that resources folder, says "ready" and waits to be ended.

#include "engine/EngineProcessRegistry.h"
#include "recognition/WhisperServerEngine.h"

#include <QCoreApplication>
#include <QDir>

#include <cstdio>

using namespace Qt::StringLiterals;
using namespace orvane;

namespace {

QCoro::Task<> load(WhisperServerEngine *engine, QString model)
{
    co_await engine->load(model);
    std::puts("ready");
    std::fflush(stdout);
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    EngineProcessRegistry registry((QString()));
    const QString resources = QCoreApplication::arguments().value(1);
    WhisperServerEngine engine({.resources = resources, .folders = {}}, registry, QDir::tempPath());
    const QCoro::Task<> loading = load(&engine, resources + u"/model"_s);
    return QCoreApplication::exec();
}
