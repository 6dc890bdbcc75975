#pragma once

#include <QString>

#include <QCoroTask>

#include <stop_token>

namespace orvane {

/// How the update checker talks to the user. All texts come in the interface language and are plain
/// text. Main thread; nothing here blocks the event loop.
class UpdatePresenter
{
public:
    enum class Choice { Download, Later };

    struct Offer
    {
        QString title;
        QString text;
        /// The default button.
        QString downloadButton;
        QString laterButton;
    };

    virtual ~UpdatePresenter() = default;

    /// Brings the program forward and asks; a dialog that is closed means Later. Throws Cancelled, with
    /// the dialog gone, when stop is requested.
    [[nodiscard]] virtual QCoro::Task<Choice> offer(Offer offer, std::stop_token stop) = 0;

    /// Tells something; returns before it is read.
    virtual void notice(const QString &title, const QString &text) = 0;

    virtual void showProgress(const QString &title, const QString &text) = 0;
    /// The fraction, 0…1, between showProgress and hideProgress; not called while it is unknown.
    virtual void setProgress(double fraction) = 0;
    virtual void hideProgress() = 0;
};

} // namespace orvane
