#include "tests/update/FakePresenter.h"

#include "base/Async.h"

#include <QScopeGuard>

namespace orvane {

QCoro::Task<UpdatePresenter::Choice> FakePresenter::offer(Offer offer, std::stop_token stop)
{
    offers << offer;
    ++openOffers;
    const auto closed = qScopeGuard([this] { --openOffers; });
    do
        co_await sleepFor(std::chrono::milliseconds(1), stop);
    while (!choice);
    const Choice chosen = *choice;
    co_return chosen;
}

void FakePresenter::showProgress(const QString &title, const QString &text)
{
    mistakes += showsProgress || title.isEmpty() || text.isEmpty();
    showsProgress = true;
}

void FakePresenter::setProgress(double fraction)
{
    mistakes += !showsProgress || fraction <= 0 || fraction > 1;
    mistakes += !progress.isEmpty() && fraction < progress.last();
    progress << fraction;
}

void FakePresenter::hideProgress()
{
    mistakes += !showsProgress;
    showsProgress = false;
}

} // namespace orvane
