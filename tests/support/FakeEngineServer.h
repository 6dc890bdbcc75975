#pragma once

#include "tests/support/FakeEngineBehaviour.h"

#include <QDir>
#include <QFile>
#include <QHash>
#include <QTcpServer>
#include <QTcpSocket>

#include <memory>

namespace orvane {

/// The HTTP side of the fake engine. It speaks on bare sockets, because it has to break the protocol too.
class FakeEngineServer : public QObject
{
    Q_OBJECT

public:
    /// The folder holds the behaviour and takes the log and the bodies.
    explicit FakeEngineServer(const QDir &folder) : m_folder(folder) {}

    [[nodiscard]] FakeEngineBehaviour behaviour() const;
    void log(const QString &event, QJsonObject details) const;

    /// False when the port is taken.
    [[nodiscard]] bool listen(quint16 port);

private:
    struct Exchange;

    void accept(QTcpSocket *client);
    void read(QTcpSocket *client, Exchange &exchange);
    bool readHead(QTcpSocket *client, Exchange &exchange);
    void answer(QTcpSocket *client, Exchange &exchange);
    void send(QTcpSocket *client, const FakeAnswer &answer) const;
    [[nodiscard]] FakeAnswer nextAnswer(const QString &path);

    const QDir m_folder;
    QTcpServer m_server;
    QHash<QString, int> m_answered;
    int m_bodies = 0;
};

} // namespace orvane
