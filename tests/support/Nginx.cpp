#include "tests/support/Nginx.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcessEnvironment>
#include <QStandardPaths>
#include <QTcpServer>

#include <fcntl.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace orvane::test {

namespace {

const QString configuration = uR"(
%3 daemon off; worker_processes 1; pid %1/pid; error_log %1/error.log;
events {}
http {
    log_format requests "$uri $status $http_range $body_bytes_sent";
    access_log %1/access.log requests; client_body_temp_path %1;
    server {
        listen 127.0.0.1:%2; root %1/served;
        location /slow/ { alias %1/served/; limit_rate 1m; }
    }
}
)"_s;

QString program()
{
    return QStandardPaths::findExecutable(u"nginx"_s, {u"/usr/sbin"_s, u"/usr/local/sbin"_s, u"/usr/bin"_s});
}

void require(bool condition, const char *what)
{
    if (!condition)
        qFatal("%s", what);
}

void write(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    require(file.open(QFile::WriteOnly) && file.write(bytes) == bytes.size(), "cannot write a served file");
}

} // namespace

Nginx::Nginx()
{
    require(m_folder.isValid(), "no temporary folder");
    QDir(m_folder.path()).mkdir(u"served"_s);

    // The port is ours before nginx runs, and it inherits the open socket, as from an earlier nginx that
    // hands over: nobody can take the port in between, and connections wait for it to be ready.
    QTcpServer listener;
    require(listener.listen(QHostAddress::LocalHost), "no free port");
    listener.pauseAccepting();
    m_port = listener.serverPort();
    const int socket = int(listener.socketDescriptor());

    const QString file = m_folder.filePath(u"nginx.conf"_s);
    // Root's worker would be another user, who may not enter a folder of root's.
    const QString user = ::geteuid() == 0 ? u"user root;"_s : QString();
    write(file, configuration.arg(m_folder.path()).arg(m_port).arg(user).toUtf8());
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"NGINX"_s, u"%1;"_s.arg(socket));
    m_process.setProcessEnvironment(environment);
    m_process.setChildProcessModifier([socket] { ::fcntl(socket, F_SETFD, 0); });
    m_process.start(program(), {u"-p"_s, m_folder.path(), u"-c"_s, file});
    require(m_process.waitForStarted(), "nginx cannot be started");
}

Nginx::~Nginx()
{
    m_process.terminate();
    if (!m_process.waitForFinished())
        m_process.kill();
    m_process.waitForFinished();
}

bool Nginx::isInstalled()
{
    return !program().isEmpty();
}

void Nginx::put(const QString &path, const QByteArray &content) const
{
    QDir().mkpath(QFileInfo(served(path)).path());
    write(served(path), content);
}

QUrl Nginx::url(const QString &path) const
{
    return QUrl(u"http://127.0.0.1:%1%2"_s.arg(m_port).arg(path));
}

QList<Nginx::Request> Nginx::requests() const
{
    QFile log(m_folder.filePath(u"access.log"_s));
    if (!log.open(QFile::ReadOnly))
        return {};
    QList<Request> requests;
    QList<QByteArray> lines = log.readAll().split('\n');
    lines.removeLast(); // not yet ended
    for (const QByteArray &line : lines) {
        const QList<QByteArray> words = line.split(' ');
        requests.append({.path = words.value(0),
                         .status = words.value(1).toInt(),
                         .range = words.value(2),
                         .sent = words.value(3).toLongLong()});
    }
    return requests;
}

QString Nginx::served(const QString &path) const
{
    return m_folder.filePath(u"served"_s) + path;
}

} // namespace orvane::test
