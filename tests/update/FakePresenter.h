#pragma once

#include "base/OneTimeEvent.h"
#include "update/UpdatePresenter.h"

#include <QList>
#include <QPair>
#include <QScopeGuard>

namespace orvane {

/// Keeps what it is told. Answers offers once there is an answer to give.
class FakePresenter : public UpdatePresenter
{
public:
    QCoro::Task<Choice> offer(Offer offer, std::stop_token stop) override
    {
        offers << offer;
        ++openOffers;
        const auto closed = qScopeGuard([this] { --openOffers; });
        co_await m_chosen->wait(stop);
        co_return m_choice;
    }
    /// What every offer is answered with, also one that is open.
    void choose(Choice choice)
    {
        m_choice = choice;
        m_chosen->happen();
    }
    void notice(const QString &title, const QString &text) override { notices.append({title, text}); }
    void showProgress(const QString &, const QString &) override { showsProgress = true; }
    void setProgress(double fraction) override { progress << fraction; }
    void hideProgress() override { showsProgress = false; }

    QList<Offer> offers;
    int openOffers = 0;
    QList<QPair<QString, QString>> notices;
    QList<double> progress;
    bool showsProgress = false;

private:
    Choice m_choice{};
    const std::shared_ptr<OneTimeEvent> m_chosen = OneTimeEvent::create();
};

} // namespace orvane
