#include "engine/EngineProcessRegistry.h"

#include "base/files/FileError.h"
#include "base/files/FileReplacement.h"
#include "engine/ProcessControl.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QStringList>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

bool isRunning(const QPointer<QProcess> &process)
{
    return process && process->state() != QProcess::NotRunning;
}

bool isEngineServer(const QString &executable)
{
    const QString name = QFileInfo(executable).fileName();
    return name == "whisper-server"_L1 || name == "llama-server"_L1;
}

} // namespace

EngineProcessRegistry::EngineProcessRegistry(const QString &pidFile) : m_pidFile(pidFile) {}

void EngineProcessRegistry::add(QProcess *process)
{
    m_processes.removeIf([](const auto &known) { return !isRunning(known); });
    m_processes.append(process);
    persistPIDs();
}

void EngineProcessRegistry::terminateAll()
{
    for (const QPointer<QProcess> &process : std::as_const(m_processes)) {
        if (isRunning(process))
            ProcessControl::terminateFamily(process->processId());
    }
    m_processes.clear();
    if (!m_pidFile.isEmpty())
        QFile::remove(m_pidFile);
}

void EngineProcessRegistry::killStaleProcesses()
{
    QFile file(m_pidFile);
    if (m_pidFile.isEmpty() || !file.open(QIODevice::ReadOnly))
        return;

    static const QRegularExpression newline(u"[\\n\\v\\f\\r\\x{85}\\x{2028}\\x{2029}]"_s);
    const QStringList lines = QString::fromUtf8(file.readAll()).split(newline, Qt::SkipEmptyParts);
    for (const QString &line : lines) {
        bool isNumber = false;
        const qint32 pid = line.trimmed().toInt(&isNumber);
        if (isNumber && isEngineServer(ProcessControl::executablePath(pid)))
            ProcessControl::terminate(pid);
    }
    file.remove();
}

void EngineProcessRegistry::persistPIDs() const
{
    if (m_pidFile.isEmpty())
        return;
    QByteArrayList pids;
    for (const QPointer<QProcess> &process : m_processes) {
        if (isRunning(process))
            pids.append(QByteArray::number(process->processId()));
    }
    QDir().mkpath(QFileInfo(m_pidFile).path());
    try {
        // After a power loss the identifiers mean nothing anyway.
        replaceFile(m_pidFile, pids.join('\n'), FileAccess::Private, Durability::Unflushed);
    } catch (const FileError &) {
        return; // it is only the second net
    }
}

} // namespace orvane
