#pragma once

#include "base/Async.h"
#include "update/UpdatePresenter.h"

#include <QList>
#include <QPair>
#include <QScopeGuard>

#include <optional>

namespace orvane {

/// Keeps what it is told. Answers offers from the event loop, once there is an answer to give.
class FakePresenter : public UpdatePresenter
{
public:
    QCoro::Task<Choice> offer(Offer offer, std::stop_token stop) override
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
    void notice(const QString &title, const QString &text) override { notices.append({title, text}); }
    void showProgress(const QString &, const QString &) override { showsProgress = true; }
    void setProgress(double fraction) override { progress << fraction; }
    void hideProgress() override { showsProgress = false; }

    std::optional<Choice> choice;

    QList<Offer> offers;
    int openOffers = 0;
    QList<QPair<QString, QString>> notices;
    QList<double> progress;
    bool showsProgress = false;
};

} // namespace orvane
