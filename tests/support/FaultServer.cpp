#include "tests/support/FaultServer.h"

#include "base/Async.h"

#include <QRandomGenerator>
#include <QRegularExpression>
#include <QSslSocket>

#include <algorithm>
#include <chrono>
#include <poll.h>
#include <sys/socket.h>

using namespace Qt::StringLiterals;

namespace orvane::test {

namespace {

constexpr qint64 chunkSize = 64 * 1024;
/// Bounds what counts as sent and has not arrived; much smaller, loopback waits for acknowledgements.
constexpr int sendBuffer = 256 * 1024;

FaultServer::Request parse(const QByteArray &head)
{
    static const QRegularExpression form(u"^range: bytes=(\\d+)-(\\d+)\r$"_s,
                                         QRegularExpression::CaseInsensitiveOption |
                                             QRegularExpression::MultilineOption);
    FaultServer::Request request{.path = head.split(' ').value(1), .range = {}};
    const auto match = form.match(QString::fromLatin1(head));
    if (match.hasMatch())
        request.range = ByteRange{match.captured(1).toLongLong(), match.captured(2).toLongLong()};
    return request;
}

} // namespace

FaultServer::FaultServer(QByteArray content, std::optional<QSslConfiguration> tls)
    : m_content(std::move(content)),
      m_tls(std::move(tls))
{
    m_connections.setMaxThreadCount(64);
    m_listener.listen(QHostAddress::LocalHost);
    m_listener.pauseAccepting(); // the event loop of the test leaves the connections to the thread
    m_acceptor = std::jthread([this] { accept(static_cast<int>(m_listener.socketDescriptor())); });
}

FaultServer::~FaultServer()
{
    m_isStopping = true;
    m_acceptor.join();
    waitForDone(m_connections);
}

void FaultServer::accept(int listener)
{
    while (!m_isStopping) {
        pollfd waiting{.fd = listener, .events = POLLIN, .revents = 0};
        ::poll(&waiting, 1, 20);
        const int descriptor = ::accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
        if (descriptor >= 0)
            startOffMainThread(&m_connections, [this, descriptor] { serve(descriptor); });
    }
}

QUrl FaultServer::url(const QString &path) const
{
    return QUrl(
        u"%1://127.0.0.1:%2%3"_s.arg(m_tls ? u"https"_s : u"http"_s).arg(m_listener.serverPort()).arg(path));
}

void FaultServer::setRule(Rule rule)
{
    const QMutexLocker lock(&m_mutex);
    m_rule = std::move(rule);
}

QList<FaultServer::Served> FaultServer::takeServed()
{
    waitForDone(m_connections);
    const QMutexLocker lock(&m_mutex);
    return std::exchange(m_served, {});
}

void FaultServer::serve(qintptr descriptor)
{
    QSslSocket socket; // plain until its encryption starts
    socket.setSocketDescriptor(descriptor);
    socket.setSocketOption(QAbstractSocket::SendBufferSizeSocketOption, sendBuffer);
    if (m_tls) {
        socket.setSslConfiguration(*m_tls);
        socket.startServerEncryption();
        if (!socket.waitForEncrypted(5000))
            return;
    }
    QByteArray head;
    while (!head.contains("\r\n\r\n")) {
        if (socket.bytesAvailable() == 0 && !socket.waitForReadyRead(5000))
            return;
        head += socket.readAll();
    }
    answer(socket, parse(head));
}

void FaultServer::answer(QTcpSocket &socket, const Request &request)
{
    Answer given;
    {
        const QMutexLocker lock(&m_mutex);
        if (m_rule)
            given = m_rule(request);
    }
    const bool isRange = request.range && !given.ignoresRange;
    const ByteRange range = isRange ? *request.range : ByteRange{0, m_content.size() - 1};
    const int status = given.status.value_or(isRange ? 206 : 200);
    const QByteArray body = given.body.value_or(m_content.mid(range.start, range.length())) + given.more;

    const QByteArray etag = given.etag.value_or("\"v1\"");
    QByteArray head = "HTTP/1.1 " + QByteArray::number(status) + " Answer\r\nConnection: close\r\n";
    if (!etag.isEmpty())
        head += "ETag: " + etag + "\r\n";
    if (given.location)
        head += "Location: " + *given.location + "\r\n";
    if (given.givesLength)
        head += "Content-Length: " + QByteArray::number(body.size()) + "\r\n";
    const QString sentRange = u"bytes %1-%2/%3"_s.arg(range.start).arg(range.end).arg(m_content.size());
    if (status == 206)
        head += "Content-Range: " + given.contentRange.value_or(sentRange.toLatin1()) + "\r\n";
    socket.write(head + "\r\n");

    const qint64 sent = sendBody(socket, body, given);
    const QMutexLocker lock(&m_mutex);
    const bool isTrue = !given.body && !given.etag && !given.contentRange;
    m_served.append({request, status, sent, isTrue});
}

qint64 FaultServer::sendBody(QTcpSocket &socket, const QByteArray &body, const Answer &answer) const
{
    const qint64 size = body.size();
    const qint64 end = std::min(answer.dropAfter.value_or(size), answer.stallAfter.value_or(size));
    const auto rate = static_cast<double>(answer.bytesPerSecond);
    qint64 sent = 0;
    while (sent < end && !m_isStopping) {
        const qint64 count = std::min(chunkSize, end - sent);
        if (rate > 0) // a late one is not made up for, so the rate is never exceeded
            std::this_thread::sleep_for(std::chrono::duration<double>(static_cast<double>(count) / rate));
        socket.write(body.constData() + sent, count);
        sent += count;
        while (socket.bytesToWrite() > 0) {
            if (!socket.waitForBytesWritten(30'000))
                return sent;
        }
    }
    while (answer.stallAfter && !m_isStopping && socket.state() == QAbstractSocket::ConnectedState)
        socket.waitForReadyRead(20);
    if (answer.dropAfter)
        socket.abort();
    else
        socket.disconnectFromHost();
    if (socket.state() != QAbstractSocket::UnconnectedState)
        socket.waitForDisconnected(5000);
    return sent;
}

QByteArray modelContent(qint64 size, const QByteArray &magic, quint32 seed)
{
    QByteArray content((size + 3) / 4 * 4, Qt::Uninitialized);
    QRandomGenerator(seed).fillRange(reinterpret_cast<quint32 *>(content.data()), content.size() / 4);
    content.truncate(size);
    return content.replace(0, magic.size(), magic);
}

} // namespace orvane::test
