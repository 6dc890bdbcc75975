#pragma once

#include "models/DownloadMeta.h"

#include <QMap>
#include <QMutex>
#include <QSslConfiguration>
#include <QTcpServer>
#include <QThread>
#include <QThreadPool>
#include <QUrl>

#include <atomic>
#include <functional>
#include <memory>
#include <optional>

namespace orvane::test {

/// A web server on loopback for one file, that answers as badly as it is told to. It runs on threads of
/// its own; a request is served by one of them from start to end.
class FaultServer
{
public:
    struct Request
    {
        QByteArray path;
        std::optional<ByteRange> range;
        /// By lower-case name.
        QMap<QByteArray, QByteArray> headers;
        /// Counts the requests to the server, from 0; the probe's range is 0 to 0.
        int number = 0;

        [[nodiscard]] bool isProbe() const { return range == ByteRange{0, 0}; }
    };

    /// What is not set is answered correctly.
    struct Answer
    {
        std::optional<int> status = {};
        std::optional<QByteArray> etag = {};
        std::optional<QByteArray> contentRange = {};
        std::optional<QByteArray> location = {};
        /// Instead of the file's bytes.
        std::optional<QByteArray> body = {};
        /// After the body.
        QByteArray more = {};
        /// False leaves the body's end to the end of the connection.
        bool givesLength = true;
        bool ignoresRange = false;
        /// After so many bytes of the body the connection is dropped, or nothing more comes.
        std::optional<qint64> dropAfter = {};
        std::optional<qint64> stallAfter = {};
        /// 0: as fast as it goes.
        qint64 bytesPerSecond = 0;
    };

    using Rule = std::function<Answer(const Request &)>;

    struct Served
    {
        Request request;
        int status = 0;
        /// Bytes of the body that went to the network.
        qint64 sent = 0;
        /// The file's own bytes, told as what they are.
        bool isTrue = true;
    };

    /// With a configuration that has a certificate and its key, the server speaks https.
    explicit FaultServer(QByteArray content, std::optional<QSslConfiguration> tls = {});
    ~FaultServer();

    [[nodiscard]] QUrl url(const QString &path = QStringLiteral("/model.bin")) const;

    /// Called for each request from then on, by several threads, one at a time. None: correct answers.
    void setRule(Rule rule);
    void setContent(QByteArray content, QByteArray etag);

    [[nodiscard]] QByteArray content() const;
    /// What was served, in the order of the requests' ends. This and forgetting it wait until no request
    /// is being served.
    [[nodiscard]] QList<Served> served() const;
    void forgetServed();

private:
    class Listener;

    void serve(qintptr descriptor);
    void answer(QTcpSocket &socket, Request request);
    /// Bytes sent.
    [[nodiscard]] qint64 sendBody(QTcpSocket &socket, const QByteArray &body, const Answer &answer) const;

    mutable QMutex m_mutex;
    QByteArray m_content;
    QByteArray m_etag;
    Rule m_rule;
    QList<Served> m_served;
    int m_requestCount = 0;
    const std::optional<QSslConfiguration> m_tls;
    mutable QThreadPool m_connections;
    QThread m_thread;
    std::unique_ptr<Listener> m_listener;
    quint16 m_port = 0;
    std::atomic<bool> m_isStopping = false;
};

/// `size` bytes that begin with `magic` and otherwise look random, the same for the same seed.
[[nodiscard]] QByteArray modelContent(qint64 size, const QByteArray &magic, quint32 seed = 1);

} // namespace orvane::test
