#include "update/VendorExchange.h"

#include "base/system/Loopback.h"
#include "settings/BuildInfo.h"
#include "update/UpdateError.h"

#include <QEventLoop>
#include <QNetworkAccessManager>
#include <QNetworkProxyFactory>
#include <QNetworkReply>
#include <QTimer>

#include <exception>
#include <memory>

using namespace Qt::StringLiterals;

namespace orvane::VendorExchange {

namespace {

constexpr qint64 readBufferSize = 256 * 1024;
constexpr qsizetype largestFetch = 1024 * 1024;

class SystemProxies : public QNetworkProxyFactory
{
public:
    QList<QNetworkProxy> queryProxy(const QNetworkProxyQuery &query) override
    {
        if (isLoopback(query.peerHostName()))
            return {QNetworkProxy::NoProxy};
        return systemProxyForQuery(query);
    }
};

QNetworkRequest networkRequest(const Request &request)
{
    QNetworkRequest made(request.url);
    made.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::NoLessSafeRedirectPolicy);
    made.setTransferTimeout(static_cast<int>(request.idleTimeout.count()));
    made.setHeader(QNetworkRequest::UserAgentHeader, u"Orvane/"_s + BuildInfo::version);
    // The bytes as they lie on the server, so that their number is its Content-Length.
    made.setRawHeader("Accept-Encoding", "identity");
    if (!request.json.isEmpty())
        made.setHeader(QNetworkRequest::ContentTypeHeader, u"application/json"_s);
    return made;
}

int statusOf(const QNetworkReply &reply)
{
    return reply.attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
}

bool isSuccess(const QNetworkReply &reply)
{
    return statusOf(reply) >= 200 && statusOf(reply) <= 299;
}

std::optional<qint64> lengthOf(const QNetworkReply &reply)
{
    const QVariant length = reply.header(QNetworkRequest::ContentLengthHeader);
    return length.isValid() ? std::optional(length.toLongLong()) : std::nullopt;
}

UpdateError failureOf(const QNetworkReply &reply)
{
    switch (reply.error()) {
    case QNetworkReply::HostNotFoundError:
    case QNetworkReply::ProxyNotFoundError:
        return UpdateError::serverNotFound();
    case QNetworkReply::SslHandshakeFailedError:
    case QNetworkReply::InsecureRedirectError:
        return UpdateError::notSecure();
    case QNetworkReply::OperationCanceledError: // what both time-outs end with
    case QNetworkReply::TimeoutError:
    case QNetworkReply::ProxyTimeoutError:
        return UpdateError::noAnswer();
    default:
        return statusOf(reply) == 0 || isSuccess(reply) ? UpdateError::connectionBroke()
                                                        : UpdateError::badStatus(statusOf(reply));
    }
}

/// Hands the body on as it arrives. The first failure of the sink drops the connection and stays.
class Body
{
public:
    Body(QNetworkReply &reply, const Sink &sink) : m_reply(reply), m_sink(sink) {}

    void receive()
    {
        if (m_failure)
            return;
        try {
            if (!isSuccess(m_reply))
                throw UpdateError::badStatus(statusOf(m_reply)); // its body is not waited for
            while (m_reply.bytesAvailable() > 0)
                m_sink(m_reply.read(readBufferSize), lengthOf(m_reply));
        } catch (...) {
            m_failure = std::current_exception();
            m_reply.abort();
        }
    }

    void throwFailure() const
    {
        if (m_failure)
            std::rethrow_exception(m_failure);
    }

private:
    QNetworkReply &m_reply;
    const Sink &m_sink;
    std::exception_ptr m_failure;
};

void waitFor(QNetworkReply &reply, std::optional<std::chrono::milliseconds> longest,
             const std::stop_token &stop)
{
    QEventLoop loop;
    QObject::connect(&reply, &QNetworkReply::finished, &loop, &QEventLoop::quit);
    QTimer deadline;
    deadline.setSingleShot(true);
    QObject::connect(&deadline, &QTimer::timeout, &reply, &QNetworkReply::abort);
    if (longest)
        deadline.start(*longest);
    // Called on another thread: queued by name, as the loop is used by this one.
    const std::stop_callback quit(
        stop, [&loop] { QMetaObject::invokeMethod(&loop, "quit", Qt::QueuedConnection); });
    if (!reply.isFinished())
        loop.exec();
}

} // namespace

Answer stream(const Request &request, const Sink &sink, const std::stop_token &stop)
{
    throwIfCancelled(stop);
    QNetworkAccessManager manager;
    manager.setProxyFactory(new SystemProxies); // the manager takes it over

    const std::unique_ptr<QNetworkReply> reply(request.json.isEmpty()
                                                   ? manager.get(networkRequest(request))
                                                   : manager.post(networkRequest(request), request.json));
    reply->setReadBufferSize(readBufferSize);
    Body body(*reply, sink);
    QObject::connect(reply.get(), &QNetworkReply::readyRead, reply.get(), [&body] { body.receive(); });
    waitFor(*reply, request.wholeTimeout, stop);

    throwIfCancelled(stop);
    body.throwFailure();
    if (reply->error() != QNetworkReply::NoError || !isSuccess(*reply))
        throw failureOf(*reply);
    body.receive();
    body.throwFailure();
    return {.url = reply->url(), .contentDisposition = reply->rawHeader("Content-Disposition")};
}

QByteArray fetch(const Request &request, const std::stop_token &stop)
{
    QByteArray body;
    const auto append = [&body](const QByteArray &bytes, std::optional<qint64>) {
        body += bytes;
        if (body.size() > largestFetch)
            throw UpdateError::tooLarge();
    };
    stream(request, append, stop);
    return body;
}

} // namespace orvane::VendorExchange
