#pragma once

#include "base/Scope.h"
#include "dictation/Guidance.h"
#include "update/UpdatePresenter.h"

#include <QList>
#include <QMessageBox>
#include <QPointer>

#include <memory>

namespace orvane {

class ProgressPanel;

/// Shows what needs the user's attention in message dialogs of their own. They block nothing, and none exists
/// before there is something to show. Needs a QApplication that outlives this.
class Dialogs : public UpdatePresenter, public Guidance
{
public:
    Dialogs();
    /// Takes every dialog away; an open offer ends with Cancelled.
    ~Dialogs() override;
    Q_DISABLE_COPY_MOVE(Dialogs)

    [[nodiscard]] QCoro::Task<Choice> offer(Offer offer, std::stop_token stop) override;
    void notice(const QString &title, const QString &text) override;
    void showProgress(const QString &title, const QString &text) override;
    void setProgress(double fraction) override;
    void hideProgress() override;

    /// One dialog at a time: a newer problem takes the older one's place.
    void guide(const QString &title, const QString &detail) override;

    /// Opens a file with the desktop's handler; false when there is none.
    [[nodiscard]] static bool openFile(const QString &file);

private:
    QMessageBox *makeMessage(QMessageBox::Icon icon, const QString &title, const QString &text);

    QList<QPointer<QMessageBox>> m_messages; ///< each deletes itself once it is closed
    QPointer<QMessageBox> m_guidance;
    std::unique_ptr<ProgressPanel> m_progress;
    Scope m_scope;
};

} // namespace orvane
