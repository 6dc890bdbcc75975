#include "ui/Dialogs.h"

#include "base/AnyStop.h"
#include "base/Error.h"
#include "settings/BuildInfo.h"
#include "ui/ProgressPanel.h"

#include <QDesktopServices>
#include <QPushButton>
#include <QUrl>

#include <coroutine>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

/// Awaits the end of a dialog, and resumes while it still exists.
struct Closed
{
    QDialog *dialog;

    [[nodiscard]] bool await_ready() const { return false; }
    void await_suspend(std::coroutine_handle<> awaiting) const
    {
        QObject::connect(dialog, &QDialog::finished, dialog, [awaiting] { awaiting.resume(); });
    }
    void await_resume() const {}
};

void bringForward(QWidget &window)
{
    window.show();
    window.raise();
    window.activateWindow();
}

} // namespace

Dialogs::Dialogs() = default;

Dialogs::~Dialogs()
{
    m_scope.end();
    for (const QPointer<QMessageBox> &message : std::as_const(m_messages))
        delete message.data();
}

QCoro::Task<UpdatePresenter::Choice> Dialogs::offer(Offer offer, std::stop_token stop)
{
    const AnyStop any(m_scope.stop(), stop);
    throwIfCancelled(any.token());
    QMessageBox *message = makeMessage(QMessageBox::Information, offer.title, offer.text);
    QPushButton *download = message->addButton(offer.downloadButton, QMessageBox::AcceptRole);
    message->setDefaultButton(download);
    message->setEscapeButton(message->addButton(offer.laterButton, QMessageBox::RejectRole));
    bringForward(*message);

    {
        const std::stop_callback close(any.token(), [message] { message->reject(); });
        co_await Closed{message};
    }
    throwIfCancelled(any.token());
    co_return message->clickedButton() == download ? Choice::Download : Choice::Later;
}

void Dialogs::notice(const QString &title, const QString &text)
{
    QMessageBox *message = makeMessage(QMessageBox::Information, title, text);
    message->addButton(QMessageBox::Ok);
    bringForward(*message);
}

void Dialogs::guide(const QString &title, const QString &detail)
{
    if (m_guidance)
        m_guidance->reject();
    m_guidance = makeMessage(QMessageBox::Warning, title, detail);
    m_guidance->addButton(QMessageBox::Ok);
    bringForward(*m_guidance);
}

QMessageBox *Dialogs::makeMessage(QMessageBox::Icon icon, const QString &title, const QString &text)
{
    // Escaped, as versions and file names in them come from a server.
    const QString body = u"<h3>"_s + title.toHtmlEscaped() + u"</h3><p style='white-space: pre-wrap'>"_s +
                         text.toHtmlEscaped() + u"</p>"_s;
    // The desktop may be showing anything when this appears, so the window says whose it is.
    auto *message = new QMessageBox(icon, BuildInfo::editionName, body);
    message->setTextFormat(Qt::RichText);
    message->setTextInteractionFlags(Qt::TextSelectableByMouse);
    message->setWindowModality(Qt::NonModal);
    QObject::connect(message, &QDialog::finished, message, &QObject::deleteLater);
    m_messages.removeAll(nullptr);
    m_messages.append(message);
    return message;
}

void Dialogs::showProgress(const QString &title, const QString &text)
{
    m_progress = std::make_unique<ProgressPanel>(title, text);
    bringForward(*m_progress);
}

void Dialogs::setProgress(double fraction)
{
    m_progress->setFraction(fraction);
}

void Dialogs::hideProgress()
{
    m_progress.reset();
}

bool Dialogs::openFile(const QString &file)
{
    return QDesktopServices::openUrl(QUrl::fromLocalFile(file));
}

} // namespace orvane
