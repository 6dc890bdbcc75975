#pragma once

#include "update/UpdatePresenter.h"

#include <QList>
#include <QPointer>

#include <memory>

class QMessageBox;

namespace orvane {

class ProgressPanel;

/// Shows what the update checker says in message dialogs of their own. They block nothing, and none exists
/// before there is something to show. Needs a QApplication that outlives this.
class UpdateDialogs : public UpdatePresenter
{
public:
    UpdateDialogs();
    /// Takes every dialog away; an open offer ends with Cancelled.
    ~UpdateDialogs() override;
    Q_DISABLE_COPY_MOVE(UpdateDialogs)

    [[nodiscard]] QCoro::Task<Choice> offer(Offer offer, std::stop_token stop) override;
    void notice(const QString &title, const QString &text) override;
    void showProgress(const QString &title, const QString &text) override;
    void setProgress(double fraction) override;
    void hideProgress() override;

    /// Opens a file with the desktop's handler; false when there is none.
    [[nodiscard]] static bool openFile(const QString &file);

private:
    QMessageBox *makeMessage(const QString &title, const QString &text);

    QList<QPointer<QMessageBox>> m_messages; ///< each deletes itself once it is closed
    std::unique_ptr<ProgressPanel> m_progress;
    std::stop_source m_lifetime;
};

} // namespace orvane
