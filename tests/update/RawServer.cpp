#include "tests/update/RawServer.h"

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

bool isWhole(const QByteArray &request)
{
    const qsizetype end = request.indexOf("\r\n\r\n");
    if (end < 0)
        return false;
    const QByteArray lower = request.first(end + 2).toLower();
    const qsizetype length = lower.indexOf("\r\ncontent-length:");
    if (length < 0)
        return true;
    const qsizetype number = length + 17;
    return request.size() - end - 4 >=
           lower.sliced(number, lower.indexOf("\r\n", number) - number).trimmed().toLongLong();
}

} // namespace

RawServer::RawServer()
{
    m_server.listen(QHostAddress::LocalHost);
    m_port = m_server.serverPort();
    QObject::connect(&m_server, &QTcpServer::newConnection, &m_server, [this] {
        while (QTcpSocket *client = m_server.nextPendingConnection())
            QObject::connect(client, &QTcpSocket::readyRead, client, [this, client] { receive(client); });
    });
}

void RawServer::receive(QTcpSocket *client)
{
    const QByteArray request = client->property("request").toByteArray() + client->readAll();
    client->setProperty("request", request);
    if (!isWhole(request))
        return;
    client->setProperty("request", QByteArray());
    m_requests << request;
    client->write(answer);
    if (then == Then::Close)
        client->disconnectFromHost();
    else
        m_waiting << client;
}

void RawServer::goOn(const QByteArray &rest)
{
    for (const QPointer<QTcpSocket> &client : std::exchange(m_waiting, {})) {
        if (!client)
            continue;
        client->write(rest);
        client->disconnectFromHost();
    }
}

QUrl RawServer::url(const QString &path) const
{
    return QUrl(u"http://127.0.0.1:%1%2"_s.arg(m_port).arg(path));
}

QByteArray RawServer::message(int status, const QByteArray &body, const QByteArray &headers)
{
    return "HTTP/1.1 " + QByteArray::number(status) + " Said\r\n" + headers +
           "Content-Length: " + QByteArray::number(body.size()) + "\r\n\r\n" + body;
}

} // namespace orvane
