#include "desktop/TextInjector.h"

#include "base/Async.h"
#include "desktop/DesktopSession.h"
#include "desktop/PasteKeys.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QInputMethodQueryEvent>
#include <QMimeData>

#include <utility>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

/// Whether what is put on Qt's clipboard gets there. A compositor takes it from a window that has the focus,
/// which none of ours is to have, and only some take it from their X server without; Qt says in any case that
/// it is there.
bool clipboardIsReached()
{
    const DesktopSession &session = DesktopSession::ofThisProcess();
    return !session.isWayland() ||
           (QGuiApplication::platformName() == "xcb"_L1 && !session.offers("zwlr_data_control_manager_v1"));
}

/// Offered until another program takes the selection over, so that an application which asks for it long
/// after the keys gets it too.
void offer(const QString &text, QClipboard::Mode mode)
{
    auto *data = new QMimeData; // the clipboard owns it
    data->setText(text);
    // Tells programs that keep a history of the clipboard not to keep this.
    data->setData(u"org.nspasteboard.ConcealedType"_s, {});
    data->setData(u"x-kde-passwordManagerHint"_s, "secret"_ba);
    QGuiApplication::clipboard()->setMimeData(data, mode);
}

/// Whether what is typed goes to a window of our own that takes no text.
bool focusIsLostOnUs()
{
    if (!QGuiApplication::focusWindow())
        return false;
    QInputMethodQueryEvent query(Qt::ImEnabled);
    if (QObject *focus = QGuiApplication::focusObject())
        QCoreApplication::sendEvent(focus, &query);
    return !query.value(Qt::ImEnabled).toBool();
}

class ClipboardInjector final : public TextInjector
{
public:
    QCoro::Task<Outcome> insert(QString text) override
    {
        const QString trimmed = text.trimmed();
        if (trimmed.isEmpty() || !qobject_cast<QGuiApplication *>(QCoreApplication::instance()) ||
            !clipboardIsReached())
            co_return Outcome::Nothing;
        offer(trimmed, QClipboard::Clipboard);
        if (!PasteKeys::canBePressed() || focusIsLostOnUs())
            co_return Outcome::LeftOnClipboard;
        const auto ask = [terminals = m_terminalClasses] { return PasteKeys::receiver(terminals); };
        const PasteKeys::Receiver receiver = co_await offMainThread(ask);
        if (receiver == PasteKeys::Receiver::Terminal)
            offer(trimmed, QClipboard::Selection); // what Shift+Insert pastes there
        const bool isPressed = co_await offMainThread([receiver] { return PasteKeys::press(receiver); });
        co_return isPressed ? Outcome::Pasted : Outcome::LeftOnClipboard;
    }

    void setTerminalClasses(const QStringList &classes) override { m_terminalClasses = classes; }

private:
    QStringList m_terminalClasses;
};

} // namespace

std::unique_ptr<TextInjector> TextInjector::forDisplay()
{
    return std::make_unique<ClipboardInjector>();
}

} // namespace orvane
