#pragma once

#include "models/DownloadMeta.h"

#include <QMutex>
#include <QSslConfiguration>
#include <QTcpServer>
#include <QThreadPool>
#include <QUrl>

#include <atomic>
#include <functional>
#include <optional>
#include <thread>

namespace orvane::test {

/// A web server on loopback for one file, that answers as badly as its rule says. Each request is served by a
/// thread of its own.
class FaultServer
{
public:
    struct Request
    {
        QByteArray path;
        std::optional<ByteRange> range;

        [[nodiscard]] bool isProbe() const { return range == ByteRange{0, 0}; }
    };

    /// What is not set is answered correctly.
    struct Answer
    {
        std::optional<int> status = {};
        std::optional<QByteArray> etag = {};
        std::optional<QByteArray> contentRange = {};
        std::optional<QByteArray> location = {};
        std::optional<QByteArray> body = {}; ///< instead of the file's bytes
        QByteArray more = {};                ///< after the body
        bool givesLength = true;             ///< false leaves the body's end to the end of the connection
        bool ignoresRange = false;
        /// After so many bytes of the body the connection is dropped, or nothing more comes.
        std::optional<qint64> dropAfter = {};
        std::optional<qint64> stallAfter = {};
        qint64 bytesPerSecond = 0; ///< 0: as fast as it goes
    };

    using Rule = std::function<Answer(const Request &)>;

    struct Served
    {
        Request request;
        int status = 0;
        qint64 sent = 0;    ///< bytes of the body that went to the network
        bool isTrue = true; ///< they are the file's own, said to be what they are
    };

    /// With a configuration that has a certificate and its key, the server speaks https.
    explicit FaultServer(QByteArray content, std::optional<QSslConfiguration> tls = {});
    ~FaultServer();

    [[nodiscard]] QUrl url(const QString &path = QStringLiteral("/model.bin")) const;

    /// Called for each request from then on, by several threads, one at a time. None: correct answers.
    void setRule(Rule rule);

    [[nodiscard]] const QByteArray &content() const { return m_content; }
    /// What was served since the last call, in the order of the requests' ends. Waits until no request is
    /// being served.
    QList<Served> takeServed();

private:
    void accept(int listener);
    void serve(qintptr descriptor);
    void answer(QTcpSocket &socket, const Request &request);
    /// Bytes sent.
    [[nodiscard]] qint64 sendBody(QTcpSocket &socket, const QByteArray &body, const Answer &answer) const;

    const QByteArray m_content;
    const std::optional<QSslConfiguration> m_tls;
    QMutex m_mutex; // guards the next two
    Rule m_rule;
    QList<Served> m_served;
    QTcpServer m_listener;
    std::atomic<bool> m_isStopping = false;
    QThreadPool m_connections;
    std::jthread m_acceptor;
};

/// `size` bytes that begin with `magic` and otherwise look random, the same for the same seed.
[[nodiscard]] QByteArray modelContent(qint64 size, const QByteArray &magic, quint32 seed = 1);

} // namespace orvane::test
