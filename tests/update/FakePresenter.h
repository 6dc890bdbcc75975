#pragma once

#include "update/UpdatePresenter.h"

#include <QList>
#include <QPair>

#include <optional>

namespace orvane {

/// Keeps what it is told. Answers offers from the event loop, once there is an answer to give.
class FakePresenter : public UpdatePresenter
{
public:
    QCoro::Task<Choice> offer(Offer offer, std::stop_token stop) override;
    void notice(const QString &title, const QString &text) override { notices.append({title, text}); }
    void showProgress(const QString &title, const QString &text) override;
    void setProgress(double fraction) override;
    void hideProgress() override;

    std::optional<Choice> choice;

    QList<Offer> offers;
    int openOffers = 0;
    QList<QPair<QString, QString>> notices;
    QList<double> progress;
    bool showsProgress = false;
    /// Calls that came when they may not.
    int mistakes = 0;
};

} // namespace orvane
