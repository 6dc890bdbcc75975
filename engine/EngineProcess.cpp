#include "engine/EngineProcess.h"

#include "base/OneTimeEvent.h"
#include "engine/ProcessControl.h"

using namespace std::chrono_literals;

namespace orvane::EngineProcess {

namespace {

constexpr auto stopGrace = 2s;
/// A process that is stuck in the kernel does not end even when killed.
constexpr auto killPatience = 5s;

/// Whether the process reached that state, or is in it already, within the limit.
QCoro::Task<bool> untilState(Handle process, bool (*isReached)(QProcess::ProcessState),
                             std::chrono::milliseconds limit, std::stop_token stop)
{
    const std::shared_ptr<OneTimeEvent> reached = OneTimeEvent::create();
    if (isReached(process->state()))
        co_return true;
    // Disconnected with it, however this ends.
    const auto listener = std::make_unique<QObject>();
    QObject::connect(process.get(), &QProcess::stateChanged, listener.get(),
                     [reached, isReached](QProcess::ProcessState state) {
                         if (isReached(state))
                             reached->happen();
                     });
    co_return co_await reached->waitFor(limit, stop);
}

// Resumed coroutines may drop the last reference inside one of the process's own signals; and the end of the
// object would wait for the end of the process.
void dispose(QProcess *process)
{
    if (process->state() == QProcess::NotRunning)
        process->deleteLater();
    else
        QObject::connect(process, &QProcess::finished, process, &QObject::deleteLater);
}

} // namespace

Handle create()
{
    return {new QProcess, dispose};
}

QCoro::Task<> start(Handle process)
{
    process->start();
    const auto isDecided = [](QProcess::ProcessState state) { return state != QProcess::Starting; };
    co_await untilState(process, isDecided, std::chrono::milliseconds::max(), {});
}

QCoro::Task<bool> untilEnded(Handle process, std::chrono::milliseconds limit, std::stop_token stop)
{
    const auto isEnded = [](QProcess::ProcessState state) { return state == QProcess::NotRunning; };
    return untilState(std::move(process), isEnded, limit, std::move(stop));
}

QCoro::Task<> end(Handle process)
{
    if (!process || process->state() == QProcess::NotRunning)
        co_return;
    ProcessControl::terminateFamily(process->processId());
    if (co_await untilEnded(process, stopGrace))
        co_return;
    ProcessControl::killFamily(process->processId());
    co_await untilEnded(process, killPatience);
}

} // namespace orvane::EngineProcess
