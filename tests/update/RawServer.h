#pragma once

#include <QList>
#include <QPointer>
#include <QTcpServer>
#include <QTcpSocket>
#include <QUrl>

namespace orvane {

/// A server on a free local port that answers every request with the same bytes, right or wrong.
class RawServer
{
public:
    enum class Then { Close, Wait };

    RawServer();

    /// Given to every request that comes whole.
    QByteArray answer;
    /// What follows it.
    Then then = Then::Close;

    /// Sends the rest of the answer to those who wait for it, and closes.
    void goOn(const QByteArray &rest);

    [[nodiscard]] QUrl url(const QString &path = {}) const;
    /// As they came, with their bodies.
    [[nodiscard]] const QList<QByteArray> &requests() const { return m_requests; }

    /// An answer with the status, further header lines, each ended by CR LF, and the body's length.
    [[nodiscard]] static QByteArray message(int status, const QByteArray &body,
                                            const QByteArray &headers = {});

private:
    void receive(QTcpSocket *client);

    QTcpServer m_server;
    quint16 m_port;
    QList<QByteArray> m_requests;
    QList<QPointer<QTcpSocket>> m_waiting;
};

} // namespace orvane
