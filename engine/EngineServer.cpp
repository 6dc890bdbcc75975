#include "engine/EngineServer.h"

#include "base/AnyStop.h"
#include "base/Async.h"
#include "base/OneTimeEvent.h"
#include "engine/EngineProcessRegistry.h"
#include "engine/PortReservation.h"
#include "engine/ProcessControl.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFileInfo>
#include <QNetworkProxy>
#include <QScopeGuard>
#include <QUuid>

#include <QCoroProcess>
#include <QCoroSignal>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orvane {

namespace {

constexpr auto pollInterval = 400ms;
constexpr auto drainInterval = 200ms;
constexpr auto probeTimeout = 1s;
constexpr auto stopGrace = 2s;
constexpr auto deathNoticeTime = 250ms;

// Not QCoro's start(): it does not notice a program that cannot be started.
QCoro::Task<> start(std::shared_ptr<QProcess> process)
{
    process->start();
    if (process->state() != QProcess::Starting)
        co_return;
    // QCoro cannot wait for the process's own signal, which is private to QProcess.
    const std::shared_ptr<OneTimeEvent> decided = OneTimeEvent::create();
    QObject::connect(process.get(), &QProcess::stateChanged, process.get(), [decided] { decided->happen(); });
    co_await decided->wait();
}

// Keeps the process object until the process has ended, killed after the grace if it must be.
QCoro::Task<> end(std::shared_ptr<QProcess> process)
{
    if (!process || process->state() == QProcess::NotRunning)
        co_return;
    process->terminate();
    if (!co_await qCoro(process.get()).waitForFinished(stopGrace)) {
        process->kill();
        co_await qCoro(process.get()).waitForFinished(-1ms);
    }
}

QCoro::Task<> untilEnded(std::shared_ptr<QProcess> process)
{
    if (process)
        co_await qCoro(process.get()).waitForFinished(deathNoticeTime);
}

} // namespace

QStringList EngineServer::SearchPath::systemFolders()
{
    QStringList folders = {u"/opt/homebrew/bin"_s, u"/usr/local/bin"_s};
    folders += qEnvironmentVariable("PATH").split(QDir::listSeparator(), Qt::SkipEmptyParts);
    return folders;
}

EngineServer::EngineServer(Description description, SearchPath search, EngineProcessRegistry &registry)
    : m_description(std::move(description)),
      m_search(std::move(search)),
      m_registry(registry)
{
    m_network.setProxy(QNetworkProxy::NoProxy);
}

EngineServer::~EngineServer()
{
    m_lifetime.request_stop();
    stop();
    endLoading();
}

QString EngineServer::findBinary() const
{
    const QStringList folders = QStringList(m_search.resources + u"/engine"_s) + m_search.folders;
    for (const QString &folder : folders) {
        const QFileInfo candidate(folder + u'/' + m_description.executable);
        if (candidate.isFile() && candidate.isExecutable())
            return candidate.absoluteFilePath();
    }
    return {};
}

QCoro::Task<> EngineServer::load(QString modelPath, std::stop_token stop)
{
    const std::stop_token alive = lifetime();
    while (const std::shared_ptr<OneTimeEvent> running = m_loading) {
        co_await running->wait();
        throwIfCancelled(alive);
        throwIfCancelled(stop);
    }
    if (serves(modelPath))
        co_return;

    m_loading = OneTimeEvent::create();
    const auto finish = qScopeGuard([this, alive] {
        if (!alive.stop_requested())
            endLoading();
    });
    m_stopping = std::stop_source();
    const AnyStop byCaller(alive, stop);
    const AnyStop byAnyone(byCaller.token(), m_stopping.get_token());
    co_await performLoad(modelPath, byAnyone.token());
}

// Those who wait are resumed from the event loop, so that the caller whose load this was can begin its
// request before another model is loaded.
void EngineServer::endLoading()
{
    if (const std::shared_ptr<OneTimeEvent> loaded = std::exchange(m_loading, nullptr))
        loaded->happen();
}

bool EngineServer::serves(const QString &modelPath) const
{
    return !m_forceRestart && isRunning() && m_loadedModelPath == modelPath;
}

QCoro::Task<> EngineServer::performLoad(QString modelPath, std::stop_token stop)
{
    const std::stop_token alive = lifetime();
    while (*m_requestsInFlight > 0)
        co_await sleepFor(drainInterval, stop);
    throwIfCancelled(stop);
    if (serves(modelPath))
        co_return;

    m_forceRestart = false;
    co_await stopAndWait();
    throwIfCancelled(stop);
    co_await launch(modelPath, stop);
    try {
        co_await untilReady(stop);
    } catch (...) {
        if (!alive.stop_requested())
            this->stop();
        throw;
    }
    m_loadedModelPath = modelPath;
}

QCoro::Task<> EngineServer::launch(QString modelPath, std::stop_token stop)
{
    const QString executable = findBinary();
    if (executable.isEmpty())
        throw EngineError(EngineError::Kind::binaryNotFound, m_description.notFoundText);

    m_port = orvaneReserveFreePort(m_description.fallbackPort);
    m_key = QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper();
    // Resumed coroutines may drop the last reference inside one of the process's own signals.
    const Process process(new QProcess, [](QProcess *ended) { ended->deleteLater(); });
    process->setProgram(executable);
    process->setArguments(arguments(executable, modelPath));
    process->setProcessEnvironment(environmentFor(executable));
    process->setStandardInputFile(QProcess::nullDevice());
    process->setStandardOutputFile(QProcess::nullDevice());
    process->setStandardErrorFile(QProcess::nullDevice());
    ProcessControl::bindToThisProgram(*process);

    co_await start(process);
    if (stop.stop_requested()) {
        spawn(end(process));
        throw Cancelled();
    }
    if (process->error() == QProcess::FailedToStart)
        throw startFailed(process->errorString());
    m_registry.add(process.get());
    m_process = process;
}

QCoro::Task<> EngineServer::untilReady(std::stop_token stop)
{
    const QDeadlineTimer deadline(m_description.startTimeout);
    while (!deadline.hasExpired()) {
        if (!isRunning())
            throw startFailed(u"процесс неожиданно завершился"_s);
        if (co_await reachable())
            co_return;
        co_await sleepFor(pollInterval, stop);
    }
    throw startFailed(u"сервер не ответил за %1 секунд"_s.arg(m_description.startTimeout.count()));
}

QCoro::Task<bool> EngineServer::reachable()
{
    QNetworkRequest request = probeRequest();
    request.setTransferTimeout(std::chrono::milliseconds(probeTimeout).count());
    const HttpAnswer answer =
        co_await answerOf(std::unique_ptr<QNetworkReply>(m_network.get(request)), lifetime());
    co_return answer.status != 0 && isReady(answer.status);
}

QProcessEnvironment EngineServer::environmentFor(const QString &executable) const
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    const QString folder = QFileInfo(executable).path();
    const QString backend = folder + u"/libggml-metal.so"_s;
    const bool isOurs = QFileInfo(folder) == QFileInfo(m_search.resources + u"/engine"_s);
    if (isOurs && QFileInfo::exists(backend))
        environment.insert(u"GGML_BACKEND_PATH"_s, backend);
    return environment;
}

void EngineServer::stop()
{
    m_stopping.request_stop();
    spawn(end(takeProcess()));
}

QCoro::Task<> EngineServer::stopAndWait()
{
    const Process process = takeProcess();
    return end(process ? process : m_ending.lock());
}

EngineServer::Process EngineServer::takeProcess()
{
    m_loadedModelPath.clear();
    m_port = 0;
    m_key.clear();
    if (m_process)
        m_ending = m_process;
    return std::exchange(m_process, nullptr);
}

QNetworkRequest EngineServer::requestTo(const QString &path) const
{
    QNetworkRequest request(QUrl(u"http://127.0.0.1:%1%2"_s.arg(m_port).arg(path)));
    request.setRawHeader("Connection", "close");
    return request;
}

QCoro::Task<> EngineServer::untilDeathIsKnown()
{
    return untilEnded(m_process);
}

EngineServer::EngineError EngineServer::startFailed(const QString &detail) const
{
    return {EngineError::Kind::serverFailedToStart, m_description.startErrorPrefix + detail};
}

EngineServer::EngineError EngineServer::requestFailed(const QString &detail) const
{
    return {EngineError::Kind::requestFailed, m_description.requestErrorPrefix + detail};
}

EngineServer::EngineError EngineServer::requestRejected(const QString &detail) const
{
    return {EngineError::Kind::requestRejected, m_description.requestErrorPrefix + detail};
}

EngineServer::InFlight EngineServer::beginRequest()
{
    ++*m_requestsInFlight;
    return {m_requestsInFlight.get(), [counter = m_requestsInFlight](void *) { --*counter; }};
}

} // namespace orvane
