#pragma once

#include <QList>
#include <QPointer>
#include <QProcess>
#include <QString>

namespace orvane {

/// The engine processes that this program started, mirrored into a file of process identifiers so that
/// the next start can end servers that a crashed run left behind. Failures of the file are ignored: it
/// is only that safety net. Main thread.
class EngineProcessRegistry
{
public:
    /// An empty path keeps no file: the form for the command line, whose engines must not appear in
    /// the file of an application that may be running.
    explicit EngineProcessRegistry(const QString &pidFile);

    /// Remembers a process that has just been launched and forgets those that have ended.
    void add(QProcess *process);

    /// Asks every registered process that still runs to end, without waiting, and deletes the file.
    void terminateAll();

    /// Asks those processes of the file to end that are still engine servers, and deletes the file.
    /// For the application's start, before any engine; identifiers now used by others are left alone.
    void killStaleProcesses();

private:
    void persistPIDs() const;

    const QString m_pidFile;
    QList<QPointer<QProcess>> m_processes;
};

} // namespace orvane
