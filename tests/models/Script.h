#pragma once

#include <QProcess>
#include <QTest>
#include <QUrl>

namespace orvane::test {

struct ScriptResult
{
    int exitCode = -1;
    QByteArray output;
};

/// Runs a shell script with $url, $dir and $download set, in namespaces of its own when `unshare` has options
/// for them, while the event loop goes on.
inline ScriptResult runScript(const QString &script, const QUrl &url, const QString &folder,
                              const QStringList &unshare = {})
{
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("url"), url.toString());
    environment.insert(QStringLiteral("dir"), folder);
    environment.insert(QStringLiteral("download"), QStringLiteral(DOWNLOAD_FILE));
    process.setProcessEnvironment(environment);
    QStringList command = {QStringLiteral("sh"), QStringLiteral("-c"), script};
    if (!unshare.isEmpty())
        command = QStringList{QStringLiteral("unshare"), QStringLiteral("--user"),
                              QStringLiteral("--map-root-user")} +
                  unshare + command;
    process.start(command.takeFirst(), command);
    if (!QTest::qWaitFor([&] { return process.state() == QProcess::NotRunning; }, 60'000))
        process.kill();
    process.waitForFinished();
    QByteArray output = process.readAllStandardOutput();
    const QByteArray errors = process.readAllStandardError();
    if (!errors.isEmpty())
        qInfo("%s", errors.constData());
    return {process.exitCode(), std::move(output)};
}

} // namespace orvane::test
