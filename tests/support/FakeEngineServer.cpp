#include "tests/support/FakeEngineServer.h"

#include <QCoreApplication>
#include <QJsonDocument>
#include <QTimer>

#include <csignal>
#include <thread>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

/// On several threads, so that it is seen to compute on a busy machine too.
void computeForever()
{
    for (int i = 0; i < 4; ++i) {
        std::thread([] {
            for (volatile unsigned count = 0;; count = count + 1) {
            }
        }).detach();
    }
}

} // namespace

/// One request of a connection while it comes in and waits for its answer.
struct FakeEngineServer::Exchange
{
    QByteArray head;
    QString method;
    QString path;
    QJsonObject headers;
    qint64 missingBytes = 0;
    qint64 bodySize = 0;
    std::unique_ptr<QFile> body;
    bool isWaiting = false;
};

FakeEngineBehaviour FakeEngineServer::behaviour() const
{
    QFile file(m_folder.filePath(QString::fromUtf16(FakeEngineFiles::behaviour)));
    if (!file.open(QFile::ReadOnly))
        qFatal("no %s", qPrintable(file.fileName()));
    return FakeEngineBehaviour::fromJson(QJsonDocument::fromJson(file.readAll()).object());
}

void FakeEngineServer::log(const QString &event, QJsonObject details) const
{
    details[u"event"_s] = event;
    details[u"pid"_s] = QCoreApplication::applicationPid();
    QFile file(m_folder.filePath(QString::fromUtf16(FakeEngineFiles::log)));
    if (!file.open(QFile::WriteOnly | QFile::Append | QFile::Unbuffered))
        qFatal("cannot write %s", qPrintable(file.fileName()));
    file.write(QJsonDocument(details).toJson(QJsonDocument::Compact) + '\n');
}

bool FakeEngineServer::listen(quint16 port)
{
    connect(&m_server, &QTcpServer::newConnection, this, [this] {
        while (QTcpSocket *client = m_server.nextPendingConnection())
            accept(client);
    });
    return m_server.listen(QHostAddress::LocalHost, port);
}

void FakeEngineServer::accept(QTcpSocket *client)
{
    const auto exchange = std::make_shared<Exchange>();
    connect(client, &QTcpSocket::readyRead, this, [this, client, exchange] { read(client, *exchange); });
    connect(client, &QTcpSocket::disconnected, this, [this, client, exchange] {
        if (!exchange->path.isEmpty())
            log(u"abandoned"_s, {{u"path"_s, exchange->path}});
        client->deleteLater();
    });
}

void FakeEngineServer::read(QTcpSocket *client, Exchange &exchange)
{
    if (exchange.isWaiting || (exchange.path.isEmpty() && !readHead(client, exchange)))
        return;
    while (exchange.missingBytes > 0 && client->bytesAvailable() > 0) {
        const QByteArray piece = client->read(exchange.missingBytes);
        exchange.missingBytes -= piece.size();
        if (exchange.body)
            exchange.body->write(piece);
    }
    if (exchange.missingBytes == 0)
        answer(client, exchange);
}

bool FakeEngineServer::readHead(QTcpSocket *client, Exchange &exchange)
{
    while (!exchange.head.endsWith("\r\n\r\n")) {
        if (!client->canReadLine())
            return false;
        exchange.head += client->readLine();
    }
    QByteArrayList lines = exchange.head.trimmed().split('\n');
    const QByteArrayList request = lines.takeFirst().split(' ');
    exchange.method = QString::fromLatin1(request.value(0));
    exchange.path = QString::fromLatin1(request.value(1));
    for (const QByteArray &line : lines) {
        const qsizetype colon = line.indexOf(':');
        exchange.headers[QString::fromLatin1(line.left(colon)).toLower()] =
            QString::fromLatin1(line.mid(colon + 1).trimmed());
    }
    exchange.bodySize = exchange.headers[u"content-length"_s].toString().toLongLong();
    exchange.missingBytes = exchange.bodySize;
    if (exchange.bodySize > 0 && behaviour().keepsBodies) {
        const QString name =
            u"body-%1-%2"_s.arg(QCoreApplication::applicationPid()).arg(QString::number(++m_bodies));
        exchange.body = std::make_unique<QFile>(m_folder.filePath(name));
        if (!exchange.body->open(QFile::WriteOnly))
            qFatal("cannot write %s", qPrintable(name));
    }
    return true;
}

void FakeEngineServer::answer(QTcpSocket *client, Exchange &exchange)
{
    exchange.isWaiting = true;
    const QString bodyFile = exchange.body ? exchange.body->fileName() : QString();
    exchange.body.reset();
    log(u"request"_s, {{u"method"_s, exchange.method},
                       {u"path"_s, exchange.path},
                       {u"headers"_s, exchange.headers},
                       {u"bodySize"_s, exchange.bodySize},
                       {u"bodyFile"_s, bodyFile}});

    const FakeAnswer answer = nextAnswer(exchange.path);
    if (answer.ending == FakeAnswer::Ending::Computes) {
        computeForever();
        return;
    }
    QTimer::singleShot(answer.delayMs, client, [this, client, answer, &exchange] {
        if (answer.ending == FakeAnswer::Ending::Never)
            return;
        exchange = Exchange();
        send(client, answer);
    });
}

void FakeEngineServer::send(QTcpSocket *client, const FakeAnswer &answer) const
{
    if (answer.ending == FakeAnswer::Ending::EngineDies)
        ::kill(::getpid(), SIGKILL);
    if (answer.ending == FakeAnswer::Ending::NotHttp) {
        client->write("220 this is another protocol\r\n");
        client->disconnectFromHost();
        return;
    }
    if (answer.ending == FakeAnswer::Ending::Closed) {
        client->disconnectFromHost();
        return;
    }
    client->write("HTTP/1.1 " + QByteArray::number(answer.status) +
                  " Fake\r\nConnection: close\r\nContent-Type: application/json\r\nContent-Length: " +
                  QByteArray::number(answer.body.size()) + "\r\n\r\n");
    const bool isCutOff = answer.ending == FakeAnswer::Ending::CutOff;
    client->write(isCutOff ? answer.body.left(answer.body.size() / 2) : answer.body);
    client->disconnectFromHost();
}

FakeAnswer FakeEngineServer::nextAnswer(const QString &path)
{
    const QList<FakeAnswer> answers = behaviour().answers.value(path);
    if (answers.isEmpty())
        return {.status = 404};
    const qsizetype index = std::min<qsizetype>(m_answered[path]++, answers.size() - 1);
    return answers[index];
}

} // namespace orvane
