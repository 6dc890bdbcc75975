#include "base/Operation.h"

#include <utility>

namespace orvane {

void Progress::report(double fraction, std::optional<std::chrono::milliseconds> remaining) const
{
    if (Operation *operation = listener())
        operation->setProgress(fraction, remaining ? qint64(remaining->count()) : -1);
}

void Progress::setStatus(const QString &text) const
{
    if (Operation *operation = m_hasStatus ? listener() : nullptr)
        operation->setStatus(text);
}

Progress Progress::withoutStatus() const
{
    Progress progress = *this;
    progress.m_hasStatus = false;
    return progress;
}

Operation *Progress::listener() const
{
    return m_run.stop_requested() ? nullptr : m_operation.data();
}

Operation::~Operation()
{
    m_scope.end();
    m_run.request_stop();
}

std::stop_token Operation::begin()
{
    Q_ASSERT(!m_running);
    m_run = std::stop_source();
    const std::stop_token stop = m_run.get_token();
    setError({});
    setProgress(0);
    setRunning(true);
    return stop;
}

void Operation::end(const QString &failure)
{
    std::stop_source run = m_run; // this object may be destroyed by whom it tells
    if (!failure.isEmpty())
        setError(failure);
    setRunning(false);
    run.request_stop();
}

void Operation::cancel()
{
    if (!m_running)
        return;
    std::stop_source run = m_run;
    setProgress(0);
    setRunning(false);
    run.request_stop();
}

void Operation::cancel(const std::stop_token &run)
{
    if (m_run.get_token() == run)
        cancel();
}

void Operation::setRunning(bool running)
{
    if (std::exchange(m_running, running) != running)
        Q_EMIT runningChanged();
}

void Operation::setError(const QString &text)
{
    if (std::exchange(m_error, text) != text)
        Q_EMIT errorChanged();
}

void Operation::setStatus(const QString &text)
{
    if (std::exchange(m_status, text) != text)
        Q_EMIT statusChanged();
}

void Operation::setProgress(double fraction, qint64 remainingMs)
{
    const bool changed = m_progress != fraction || m_remainingMs != remainingMs;
    m_progress = fraction;
    m_remainingMs = remainingMs;
    if (changed)
        Q_EMIT progressChanged();
}

} // namespace orvane
