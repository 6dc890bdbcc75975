#pragma once

#include "tests/support/Files.h"

#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>
#include <QTcpServer>
#include <QTemporaryDir>
#include <QUrl>

#include <fcntl.h>
#include <unistd.h>

namespace orvane::test {

/// nginx on loopback, serving the files that a test puts into it, until it is destroyed.
class Nginx
{
public:
    Nginx()
    {
        // The port is ours before nginx runs, and it inherits the open socket, as from an earlier nginx that
        // hands over: nobody can take the port in between, and connections wait for it to be ready.
        QTcpServer listener;
        listener.listen(QHostAddress::LocalHost);
        listener.pauseAccepting();
        m_port = listener.serverPort();
        const int socket = int(listener.socketDescriptor());

        // Root's worker would be another user, who may not enter a folder of root's.
        const QString configuration = QStringLiteral(R"(
%3 daemon off; worker_processes 1; pid %1/pid; error_log %1/error.log;
events {}
http {
    log_format requests "$http_range";
    access_log %1/access.log requests; client_body_temp_path %1;
    server {
        listen 127.0.0.1:%2; root %1/served;
        location /slow/ { alias %1/served/; limit_rate 1m; }
    }
})");
        const QString user = ::geteuid() == 0 ? QStringLiteral("user root;") : QString();
        const QString file = m_folder.filePath(QStringLiteral("nginx.conf"));
        test::put(file, configuration.arg(m_folder.path()).arg(m_port).arg(user).toUtf8());
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("NGINX"), QStringLiteral("%1;").arg(socket));
        m_process.setProcessEnvironment(environment);
        m_process.setChildProcessModifier([socket] { ::fcntl(socket, F_SETFD, 0); });
        m_process.start(program(), {QStringLiteral("-p"), m_folder.path(), QStringLiteral("-c"), file});
        if (!m_process.waitForStarted())
            qFatal("nginx cannot be started");
    }

    ~Nginx()
    {
        m_process.terminate();
        m_process.waitForFinished();
    }
    Q_DISABLE_COPY_MOVE(Nginx)

    [[nodiscard]] static bool isInstalled() { return !program().isEmpty(); }

    /// Serves `content` under the path, which begins with a slash.
    void put(const QString &path, const QByteArray &content) const
    {
        const QString file = m_folder.filePath(QStringLiteral("served") + path);
        QDir().mkpath(QFileInfo(file).path());
        test::put(file, content);
    }
    /// Under "/slow" lies the same as under the root, at 1 MiB/s for each connection.
    [[nodiscard]] QUrl url(const QString &path = {}) const
    {
        return QUrl(QStringLiteral("http://127.0.0.1:%1%2").arg(m_port).arg(path));
    }
    /// What the requests that have ended asked for, such as "bytes=0-0"; "-" for the whole file.
    [[nodiscard]] QList<QByteArray> ranges() const
    {
        QList<QByteArray> lines = contentOf(m_folder.filePath(QStringLiteral("access.log"))).split('\n');
        lines.removeLast(); // not yet ended
        return lines;
    }

private:
    [[nodiscard]] static QString program()
    {
        return QStandardPaths::findExecutable(QStringLiteral("nginx"),
                                              {QStringLiteral("/usr/sbin"), QStringLiteral("/usr/bin")});
    }

    QTemporaryDir m_folder;
    quint16 m_port = 0;
    QProcess m_process;
};

} // namespace orvane::test
