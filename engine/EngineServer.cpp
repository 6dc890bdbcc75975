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

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orvane {

namespace {

constexpr auto probeInterval = 400ms;
constexpr auto probeTimeout = 1s;
constexpr auto deathNoticeTime = 250ms;
constexpr auto abortPatience = 2s;
/// Over which it is seen whether the server computes.
constexpr auto lookAtServer = 200ms;

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
    m_scope.end();
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
    while (const std::shared_ptr<OneTimeEvent> running = m_loading) {
        const AnyStop waiting(stop, m_stopping.get_token());
        co_await m_scope(running->wait(waiting.token()), waiting.token());
    }
    if (serves(modelPath))
        co_return;

    m_loading = OneTimeEvent::create();
    const auto finish = qScopeGuard([this, gone = m_scope.stop()] {
        if (!gone.stop_requested())
            endLoading();
    });
    m_stopping = std::stop_source();
    const AnyStop any(m_scope.stop(), stop, m_stopping.get_token());
    co_await m_scope(performLoad(modelPath, any.token()), any.token());
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
    while (m_requests.areTaken())
        co_await m_scope(m_requests.end()->wait(stop), stop);
    if (serves(modelPath))
        co_return;

    m_forceRestart = false;
    co_await m_scope(endServer(), stop);
    try {
        co_await m_scope(launch(modelPath, stop), stop);
        co_await m_scope(untilReady(stop), stop);
    } catch (const Gone &) {
        throw;
    } catch (...) {
        spawn(endServer());
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
    const EngineProcess::Handle process = EngineProcess::create();
    process->setProgram(executable);
    process->setArguments(arguments(executable, modelPath));
    process->setProcessEnvironment(environmentFor(executable));
    process->setStandardInputFile(QProcess::nullDevice());
    process->setStandardOutputFile(QProcess::nullDevice());
    process->setStandardErrorFile(QProcess::nullDevice());
    ProcessControl::bindToThisProgram(*process);

    m_process = process;
    co_await m_scope(EngineProcess::start(process), stop);
    if (process->error() == QProcess::FailedToStart)
        throw startFailed(u"файл движка повреждён или не подходит этой системе"_s);
    m_registry.add(process.get());
}

QCoro::Task<> EngineServer::untilReady(std::stop_token stop)
{
    const QDeadlineTimer deadline(m_description.startTimeout);
    while (!deadline.hasExpired()) {
        if (!isRunning())
            throw startFailed(u"процесс неожиданно завершился"_s);
        if (const auto answer = co_await m_scope(readyAnswer(stop), stop)) {
            co_await m_scope(requireOurs(*answer, stop), stop);
            co_return;
        }
        co_await m_scope(EngineProcess::untilEnded(m_process, probeInterval, stop), stop);
    }
    throw startFailed(u"сервер не ответил за %1 секунд"_s.arg(m_description.startTimeout.count()));
}

QCoro::Task<std::optional<HttpAnswer>> EngineServer::readyAnswer(std::stop_token stop)
{
    QNetworkRequest request = probeRequest();
    request.setTransferTimeout(std::chrono::milliseconds(probeTimeout).count());
    HttpAnswer answer =
        co_await m_scope(answerOf(std::unique_ptr<QNetworkReply>(m_network.get(request)), stop), stop);
    if (answer.status == 0 || !isReady(answer.status))
        co_return std::nullopt;
    co_return answer;
}

QCoro::Task<> EngineServer::requireOurs(HttpAnswer answer, std::stop_token stop)
{
    if (answer.serverName == m_description.serverName)
        co_return;
    const auto isOurs = [pid = m_process->processId(), port = m_port] {
        return ProcessControl::listensOn(pid, port);
    };
    if (!co_await m_scope(offMainThread(isOurs), stop))
        throw startFailed(u"на его порту отвечает другая программа"_s);
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
    spawn(endServer());
}

QCoro::Task<> EngineServer::stopAndWait()
{
    m_stopping.request_stop();
    return endServer();
}

QCoro::Task<> EngineServer::endServer()
{
    const EngineProcess::Handle process = takeProcess();
    return EngineProcess::end(process ? process : m_ending.lock());
}

EngineProcess::Handle EngineServer::takeProcess()
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

QCoro::Task<HttpAnswer> EngineServer::answerTo(std::unique_ptr<QNetworkReply> reply, std::stop_token stop)
{
    const AnyStop any(m_scope.stop(), stop);
    try {
        co_return co_await m_scope(answerOf(std::move(reply), any.token()), any.token());
    } catch (const Gone &) {
        throw;
    } catch (const Cancelled &) {
        spawn(restartUnlessFree());
        throw;
    }
}

QCoro::Task<> EngineServer::restartUnlessFree()
{
    const std::weak_ptr<QProcess> server = m_process;
    const auto isWithoutRequest = [this, server] {
        return isRunning() && m_process == server.lock() && !m_requests.areTaken();
    };
    co_await m_scope(sleepFor(abortPatience, m_scope.stop()));
    if (!isWithoutRequest())
        co_return;
    const std::chrono::milliseconds before = ProcessControl::processorTime(m_process->processId());
    co_await m_scope(sleepFor(lookAtServer, m_scope.stop()));
    if (!isWithoutRequest())
        co_return;
    if (ProcessControl::processorTime(m_process->processId()) - before >= lookAtServer / 10)
        requestRestart();
}

QCoro::Task<> EngineServer::untilDeathIsKnown()
{
    if (const EngineProcess::Handle process = m_process)
        co_await EngineProcess::untilEnded(process, deathNoticeTime);
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
} // namespace orvane
