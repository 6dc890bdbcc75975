#include "diagnostics/CheckRun.h"

#include "base/AnyStop.h"
#include "base/Async.h"
#include "base/OneTimeEvent.h"

#include <algorithm>
#include <utility>

namespace orvane {

CheckRun::CheckRun(QList<Check> checks, QObject *parent)
    : QObject(parent),
      m_checks(std::move(checks)),
      m_results(m_checks.size())
{}

CheckRun::~CheckRun()
{
    m_scope.end();
}

bool CheckRun::hasFault() const
{
    return std::ranges::any_of(m_results, [](const std::optional<CheckResult> &result) {
        return result && result->state == CheckResult::State::Bad;
    });
}

QCoro::Task<> CheckRun::run(std::stop_token stop)
{
    if (!m_run && !m_checks.isEmpty()) {
        m_run = OneTimeEvent::create();
        m_pending = m_checks.size();
        m_results.fill(std::nullopt);
        Q_EMIT runningChanged();
        Q_EMIT resultsChanged();
        for (qsizetype i = 0; i < m_checks.size(); ++i)
            spawn(runOne(i, stop));
    }
    if (const std::shared_ptr<OneTimeEvent> end = m_run)
        co_await m_scope(end->wait(stop), stop);
}

QCoro::Task<> CheckRun::runOne(qsizetype index, std::stop_token stop)
{
    const AnyStop any(stop, m_scope.stop());
    std::optional<CheckResult> result;
    try {
        result = co_await m_scope(m_checks.at(index).run(any.token()));
    } catch (const Gone &) {
        throw;
    } catch (const Cancelled &) {
        // not found out
    } catch (const std::exception &error) {
        result = {.state = CheckResult::State::Bad, .text = descriptionOf(error)};
    }
    m_results[index] = result;
    Q_EMIT resultsChanged();
    if (--m_pending > 0)
        co_return;
    std::exchange(m_run, nullptr)->happen();
    Q_EMIT runningChanged();
}

} // namespace orvane
