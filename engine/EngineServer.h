#pragma once

#include "base/Error.h"
#include "base/Holds.h"
#include "base/Scope.h"
#include "engine/EngineProcess.h"
#include "engine/HttpExchange.h"

#include <QNetworkAccessManager>
#include <QNetworkRequest>
#include <QObject>
#include <QProcessEnvironment>
#include <QStringList>

#include <QCoroTask>

#include <chrono>
#include <memory>
#include <optional>
#include <stop_token>

namespace orvane {

class EngineProcessRegistry;
class OneTimeEvent;

/// Supervises an engine: a child process that loads one model, serves HTTP on a loopback port and is
/// kept running between requests. Finds and launches it, waits until it answers, restarts it when
/// another model is wanted, but never under a running request, and ends it. What an engine's requests
/// look like is the business of the class derived from this one.
///
/// An object of the main thread; operations are coroutines. Concurrent loads lead to one launch.
class EngineServer : public QObject
{
    Q_OBJECT

public:
    /// Failures of an engine. Their texts are Russian in every interface language, but for contextOverflow.
    class EngineError : public Error
    {
    public:
        enum class Kind {
            serverFailedToStart,
            requestFailed,
            /// The request failed because the server could not make use of what was sent.
            requestRejected,
            /// The request was larger than what the model can take in.
            contextOverflow,
            binaryNotFound,
        };

        EngineError(Kind kind, const QString &description) : Error(description), m_kind(kind) {}
        [[nodiscard]] Kind kind() const { return m_kind; }

    private:
        Kind m_kind;
    };

    /// Where an engine is looked for, in this order; the first executable file is taken.
    struct SearchPath
    {
        /// The program's own resources; its subfolder "engine" comes first.
        QString resources;
        /// Then these folders. The default is the two fixed places and the folders of PATH.
        QStringList folders = systemFolders();

        [[nodiscard]] static QStringList systemFolders();
    };

    /// What tells one engine from another.
    struct Description
    {
        QString executable;
        /// How it names itself in the header "Server".
        QByteArray serverName;
        quint16 fallbackPort;
        std::chrono::seconds startTimeout;
        QString startErrorPrefix;
        QString requestErrorPrefix;
        QString notFoundText;
    };

    ~EngineServer() override;

    /// The executable to launch; empty when the engine is not installed.
    [[nodiscard]] QString findBinary() const;

    /// Makes sure that a server with this model (path of a file) runs and answers. Throws EngineError,
    /// or Cancelled, which also ends a launch that this call began.
    QCoro::Task<> load(QString modelPath, std::stop_token stop = {});

    /// The next load launches the server anew even for the same model. Nothing is stopped now.
    void requestRestart() { m_forceRestart = true; }

    /// Asks the server to end; kills it if it has not after 2 s. Does not wait. A load under way, and those
    /// that wait for it, end with Cancelled.
    void stop();

    /// The same, and returns once the process is gone, also when stop() was called before; or when the system
    /// has not ended it 5 s after it was killed.
    QCoro::Task<> stopAndWait();

    /// An error of this engine with its prefix, also for callers that refuse a request on its behalf.
    [[nodiscard]] EngineError requestFailed(const QString &detail) const;

    [[nodiscard]] bool isRunning() const { return m_process && m_process->state() == QProcess::Running; }

protected:
    EngineServer(Description description, SearchPath search, EngineProcessRegistry &registry);

    /// Command line for a launch on port().
    [[nodiscard]] virtual QStringList arguments(const QString &executable,
                                                const QString &modelPath) const = 0;
    /// The readiness probe, and whether its answer (a status code, never 0) means ready.
    [[nodiscard]] virtual QNetworkRequest probeRequest() const = 0;
    [[nodiscard]] virtual bool isReady(int status) const = 0;

    /// A request to the running server, on a connection of its own: an idle one that is used again may
    /// be closed by the server at that very moment.
    [[nodiscard]] QNetworkRequest requestTo(const QString &path) const;
    [[nodiscard]] quint16 port() const { return m_port; }
    /// A random key made for each launch, for servers that can ask their clients for one. Like the port it is
    /// there from the launch until the server is stopped.
    [[nodiscard]] QString key() const { return m_key; }
    [[nodiscard]] QNetworkAccessManager &network() { return m_network; }

    /// Sends nothing itself: waits for the answer to a request to this server. A requested stop aborts the
    /// request; a server that goes on computing for more than 2 s then is restarted by the next load.
    QCoro::Task<HttpAnswer> answerTo(std::unique_ptr<QNetworkReply> reply, std::stop_token stop);

    /// To be awaited after a transfer broke off, because the connection of a server that dies closes a
    /// moment before its process is gone: isRunning() is right afterwards.
    QCoro::Task<> untilDeathIsKnown();

    [[nodiscard]] EngineError requestRejected(const QString &detail) const;

    /// Counts a request as in flight while it lives: until then no other model is loaded.
    using InFlight = Holds::Hold;
    [[nodiscard]] InFlight beginRequest() { return m_requests.take(); }

    /// What the coroutines of this object await everything through.
    [[nodiscard]] const Scope &scope() const { return m_scope; }

private:
    [[nodiscard]] bool serves(const QString &modelPath) const;
    void endLoading();
    QCoro::Task<> performLoad(QString modelPath, std::stop_token stop);
    QCoro::Task<> launch(QString modelPath, std::stop_token stop);
    QCoro::Task<> untilReady(std::stop_token stop);
    /// Empty while the server does not answer that it is ready.
    QCoro::Task<std::optional<HttpAnswer>> readyAnswer(std::stop_token stop);
    /// Whoever answers on the port is given what the user said: throws when that is another program.
    QCoro::Task<> requireOurs(HttpAnswer answer, std::stop_token stop);
    QCoro::Task<> restartUnlessFree();
    QCoro::Task<> endServer();
    [[nodiscard]] EngineError startFailed(const QString &detail) const;
    [[nodiscard]] QProcessEnvironment environmentFor(const QString &executable) const;
    [[nodiscard]] EngineProcess::Handle takeProcess();

    const Description m_description;
    const SearchPath m_search;
    EngineProcessRegistry &m_registry;
    QNetworkAccessManager m_network;

    /// From its launch on.
    EngineProcess::Handle m_process;
    /// The last one that was asked to end.
    std::weak_ptr<QProcess> m_ending;
    quint16 m_port = 0;
    QString m_key;
    QString m_loadedModelPath;
    bool m_forceRestart = false;
    /// The end of the load that is under way; none when none is.
    std::shared_ptr<OneTimeEvent> m_loading;
    /// Requested by stop(); fresh for every load that launches.
    std::stop_source m_stopping;
    const Holds m_requests;
    Scope m_scope;
};

} // namespace orvane
