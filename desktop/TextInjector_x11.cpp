#include "desktop/TextInjector.h"

#include "base/Async.h"
#include "desktop/DesktopSession.h"
#include "desktop/PasteKeys.h"
#include "desktop/ToolkitClipboard.h"
#include "desktop/wayland/WaylandInjector.h"

#include <QGuiApplication>

namespace orvane {

namespace {

/// By the toolkit's clipboard, and by keys that are pressed at the X server.
class ClipboardInjector final : public TextInjector
{
public:
    QCoro::Task<Outcome> insert(QString text) override
    {
        const QString trimmed = text.trimmed();
        if (trimmed.isEmpty() || !qobject_cast<QGuiApplication *>(QCoreApplication::instance()))
            co_return Outcome::Nothing;
        ToolkitClipboard::offer(trimmed, QClipboard::Clipboard);
        if (!PasteKeys::canBePressed() || ToolkitClipboard::focusIsLostOnUs())
            co_return Outcome::LeftOnClipboard;
        const auto ask = [terminals = m_terminalClasses] { return PasteKeys::receiver(terminals); };
        const PasteKeys::Receiver receiver = co_await offMainThread(ask);
        if (receiver == PasteKeys::Receiver::Terminal)
            ToolkitClipboard::offer(trimmed, QClipboard::Selection); // what Shift+Insert pastes there
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
    if (DesktopSession::ofThisProcess().isWayland())
        return std::make_unique<WaylandInjector>();
    return std::make_unique<ClipboardInjector>();
}

} // namespace orvane
