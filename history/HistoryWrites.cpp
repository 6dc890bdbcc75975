#include "history/HistoryWrites.h"

#include "base/Async.h"
#include "history/HistoryArchive.h"

#include <chrono>
#include <utility>

using namespace std::chrono_literals;

namespace orvane {

namespace {

constexpr auto retryDelay = 10s;

} // namespace

HistoryWrites::HistoryWrites(HistoryArchive &archive, QThreadPool &pool) : m_archive(archive), m_pool(pool)
{
    m_retryDelay.setSingleShot(true);
    m_retryDelay.setInterval(retryDelay);
    connect(&m_retryDelay, &QTimer::timeout, this, &HistoryWrites::retry);
}

void HistoryWrites::start(const QUuid &id, std::function<void()> work)
{
    spawn(write(id, std::move(work)));
}

QString HistoryWrites::anyFailure() const
{
    return m_failures.isEmpty() ? QString() : *m_failures.cbegin();
}

QCoro::Task<> HistoryWrites::write(QUuid id, std::function<void()> work)
{
    ++m_pending[id];
    QString failure;
    try {
        co_await m_scope(offMainThread(&m_pool, std::move(work)));
    } catch (const Gone &) {
        throw;
    } catch (const std::exception &error) {
        failure = descriptionOf(error);
    }
    if (--m_pending[id] == 0)
        m_pending.remove(id);
    if (failure.isEmpty())
        m_failures.remove(id);
    else
        m_failures.insert(id, failure);
    planRetry(failure.isEmpty());
    Q_EMIT ended(failure);
}

void HistoryWrites::planRetry(bool hasWorked)
{
    if (m_failures.isEmpty())
        m_retryDelay.stop();
    else if (hasWorked) // what kept the others from the disk may be over
        retry();
    else if (!m_retryDelay.isActive())
        m_retryDelay.start();
}

void HistoryWrites::retry()
{
    for (const QUuid &id : m_failures.keys()) {
        if (!isPending(id))
            start(id, [archive = &m_archive, id] { archive->retry(id); });
    }
}

} // namespace orvane
