#include "tests/support/FaultServer.h"

#include "base/Async.h"

#include <QRegularExpression>
#include <QSslSocket>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <functional>
#include <random>
#include <thread>

using namespace Qt::StringLiterals;

namespace orvane::test {

namespace {

using Clock = std::chrono::steady_clock;

constexpr qint64 chunkSize = 64 * 1024;
/// Bounds what counts as sent and has not arrived; much smaller, loopback waits for acknowledgements.
constexpr int sendBuffer = 256 * 1024;

QByteArray readHead(QTcpSocket &socket)
{
    QByteArray head;
    while (!head.contains("\r\n\r\n")) {
        if (socket.bytesAvailable() == 0 && !socket.waitForReadyRead(5000))
            return {};
        head += socket.readAll();
    }
    return head;
}

FaultServer::Request parse(const QByteArray &head)
{
    FaultServer::Request request;
    const QList<QByteArray> lines = head.split('\n');
    request.path = lines.first().split(' ').value(1);
    for (const QByteArray &line : lines.mid(1)) {
        const qsizetype colon = line.indexOf(':');
        if (colon > 0)
            request.headers[line.first(colon).toLower()] = line.mid(colon + 1).trimmed();
    }
    static const QRegularExpression form(u"^bytes=(\\d+)-(\\d+)$"_s);
    const auto match = form.match(QString::fromLatin1(request.headers.value("range")));
    if (match.hasMatch())
        request.range = ByteRange{match.captured(1).toLongLong(), match.captured(2).toLongLong()};
    return request;
}

} // namespace

class FaultServer::Listener : public QTcpServer
{
public:
    explicit Listener(FaultServer &server) : m_server(server) {}

protected:
    void incomingConnection(qintptr descriptor) override
    {
        const auto serve = [&server = m_server, descriptor] {
            server.serve(descriptor);
            detail::announceHandOver();
        };
        m_server.m_connections.start(std::function<void()>(detail::HandedOver(serve)));
    }

private:
    FaultServer &m_server;
};

FaultServer::FaultServer(QByteArray content, std::optional<QSslConfiguration> tls)
    : m_content(std::move(content)),
      m_etag("\"v1\""),
      m_tls(std::move(tls)),
      m_listener(std::make_unique<Listener>(*this))
{
    m_connections.setMaxThreadCount(64);
    m_listener->listen(QHostAddress::LocalHost);
    m_port = m_listener->serverPort();
    m_listener->moveToThread(&m_thread);
    m_thread.start();
}

FaultServer::~FaultServer()
{
    m_isStopping = true;
    const auto close = [this] {
        m_listener->close();
        m_thread.quit();
        detail::announceHandOver();
    };
    QMetaObject::invokeMethod(m_listener.get(), detail::HandedOver(close), Qt::QueuedConnection);
    m_thread.wait();
    waitForDone(m_connections);
}

QUrl FaultServer::url(const QString &path) const
{
    return QUrl(u"%1://127.0.0.1:%2%3"_s.arg(m_tls ? u"https"_s : u"http"_s).arg(m_port).arg(path));
}

void FaultServer::setRule(Rule rule)
{
    const QMutexLocker lock(&m_mutex);
    m_rule = std::move(rule);
}

void FaultServer::setContent(QByteArray content, QByteArray etag)
{
    const QMutexLocker lock(&m_mutex);
    m_content = std::move(content);
    m_etag = std::move(etag);
}

QByteArray FaultServer::content() const
{
    const QMutexLocker lock(&m_mutex);
    return m_content;
}

QList<FaultServer::Served> FaultServer::served() const
{
    waitForDone(m_connections);
    const QMutexLocker lock(&m_mutex);
    return m_served;
}

void FaultServer::forgetServed()
{
    waitForDone(m_connections);
    const QMutexLocker lock(&m_mutex);
    m_served.clear();
}

void FaultServer::serve(qintptr descriptor)
{
    QSslSocket socket; // plain until told otherwise
    socket.setSocketDescriptor(descriptor);
    socket.setSocketOption(QAbstractSocket::SendBufferSizeSocketOption, sendBuffer);
    if (m_tls) {
        socket.setSslConfiguration(*m_tls);
        socket.startServerEncryption();
        if (!socket.waitForEncrypted(5000))
            return;
    }
    const QByteArray head = readHead(socket);
    if (!head.isEmpty())
        answer(socket, parse(head));
}

void FaultServer::answer(QTcpSocket &socket, Request request)
{
    Answer given;
    QByteArray content;
    QByteArray etag;
    {
        const QMutexLocker lock(&m_mutex);
        request.number = m_requestCount++;
        if (m_rule)
            given = m_rule(request);
        content = m_content;
        etag = given.etag.value_or(m_etag);
    }
    const bool isRange = request.range && !given.ignoresRange;
    const ByteRange range = isRange ? *request.range : ByteRange{0, content.size() - 1};
    const int status = given.status.value_or(isRange ? 206 : 200);
    const QByteArray body = given.body.value_or(content.mid(range.start, range.length())) + given.more;

    QByteArray head = "HTTP/1.1 " + QByteArray::number(status) + " Answer\r\nConnection: close\r\n";
    if (!etag.isEmpty())
        head += "ETag: " + etag + "\r\n";
    if (given.location)
        head += "Location: " + *given.location + "\r\n";
    if (given.givesLength)
        head += "Content-Length: " + QByteArray::number(body.size()) + "\r\n";
    const QByteArray natural = "bytes " + QByteArray::number(range.start) + '-' +
                               QByteArray::number(range.end) + '/' + QByteArray::number(content.size());
    if (status == 206)
        head += "Content-Range: " + given.contentRange.value_or(natural) + "\r\n";
    socket.write(head + "\r\n");

    const qint64 sent = sendBody(socket, body, given);
    const QMutexLocker lock(&m_mutex);
    const bool isTrue = !given.body && !given.etag && !given.contentRange;
    m_served.append({request, status, sent, isTrue});
}

qint64 FaultServer::sendBody(QTcpSocket &socket, const QByteArray &body, const Answer &answer) const
{
    const qint64 dropAt = answer.dropAfter.value_or(body.size());
    const qint64 stallAt = answer.stallAfter.value_or(body.size());
    const qint64 end = std::min({qint64(body.size()), dropAt, stallAt});
    const auto startOfNext = [&answer](Clock::time_point planned, qint64 bytes) {
        // From now when it is late: a pause is not made up for, so the rate is never exceeded.
        const double seconds = static_cast<double>(bytes) / static_cast<double>(answer.bytesPerSecond);
        return std::max(planned, Clock::now()) +
               std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds));
    };
    auto next = Clock::now();
    qint64 sent = 0;
    while (sent < end && !m_isStopping) {
        const qint64 count = std::min(chunkSize, end - sent);
        if (answer.bytesPerSecond > 0) {
            std::this_thread::sleep_until(next);
            next = startOfNext(next, count);
        }
        socket.write(body.constData() + sent, count);
        sent += count;
        while (socket.bytesToWrite() > 0) {
            if (!socket.waitForBytesWritten(30'000))
                return sent;
        }
    }
    while (answer.stallAfter && !m_isStopping && socket.state() == QAbstractSocket::ConnectedState)
        socket.waitForReadyRead(20);
    if (answer.dropAfter) {
        socket.abort();
    } else {
        socket.disconnectFromHost();
        if (socket.state() != QAbstractSocket::UnconnectedState)
            socket.waitForDisconnected(5000);
    }
    return sent;
}

QByteArray modelContent(qint64 size, const QByteArray &magic, quint32 seed)
{
    QByteArray content(size, Qt::Uninitialized);
    std::mt19937_64 random(seed);
    qint64 at = 0;
    for (; at + 8 <= size; at += 8) {
        const quint64 word = random();
        std::memcpy(content.data() + at, &word, 8);
    }
    for (; at < size; ++at)
        content[at] = static_cast<char>(random());
    return content.replace(0, magic.size(), magic);
}

} // namespace orvane::test
