#pragma once

#include <QByteArray>
#include <QList>
#include <QProcess>
#include <QString>
#include <QTemporaryDir>
#include <QUrl>

namespace orvane::test {

/// nginx on loopback, serving the files that a test puts into it, until it is destroyed.
class Nginx
{
public:
    struct Request
    {
        QByteArray path;
        int status = 0;
        /// As sent, such as "bytes=0-0"; "-" for none.
        QByteArray range;
        /// Bytes of the body that went to the network.
        qint64 sent = 0;
    };

    Nginx();
    ~Nginx();
    Nginx(const Nginx &) = delete;
    Nginx &operator=(const Nginx &) = delete;

    [[nodiscard]] static bool isInstalled();

    /// Serves `content` under the path, which begins with a slash.
    void put(const QString &path, const QByteArray &content) const;
    /// Under "/slow" lies the same as under the root, at 1 MiB/s for each connection.
    [[nodiscard]] QUrl url(const QString &path = {}) const;
    /// The requests that have ended.
    [[nodiscard]] QList<Request> requests() const;

private:
    [[nodiscard]] QString served(const QString &path) const;

    QTemporaryDir m_folder;
    quint16 m_port = 0;
    QProcess m_process;
};

} // namespace orvane::test
