#pragma once

#include <QString>

#include <chrono>

class QProcess;

/// What the supervision of engines needs of the operating system.
namespace orvane::ProcessControl {

/// Full path of the executable that the process runs; empty when there is no such process or it may
/// not be looked at.
[[nodiscard]] QString executablePath(qint32 pid);

/// Sends the process the polite request to end (SIGTERM). Errors are ignored.
void terminate(qint32 pid);

/// Whether the process, or one that descends from it as a script's command does, holds a socket that listens
/// on that TCP port of 127.0.0.1 or of all addresses. Takes a moment: off the main thread.
[[nodiscard]] bool listensOn(qint64 pid, quint16 port);

/// What the process has computed since its start, on all cores; 0 when that is not known.
[[nodiscard]] std::chrono::milliseconds processorTime(qint64 pid);

/// Sends a process that was prepared by bindToThisProgram, and what descends from it, the polite request to
/// end (SIGTERM), or kills all of them.
void terminateFamily(qint64 pid);
void killFamily(qint64 pid);

/// Prepares a process that is about to be started: it dies with this program, however this program
/// ends; a Ctrl-C in the terminal does not reach it, so that it is ended in order; and no signal is
/// blocked in it, even if this program blocks those that it reads elsewhere.
void bindToThisProgram(QProcess &process);

} // namespace orvane::ProcessControl
