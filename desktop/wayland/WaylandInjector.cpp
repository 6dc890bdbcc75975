#include "desktop/wayland/WaylandInjector.h"

#include "desktop/DesktopSession.h"
#include "desktop/ToolkitClipboard.h"

#include <QGuiApplication>

#include <chrono>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orvane {

namespace {

/// For the focused program to ask for the text once it was told to paste.
constexpr auto patienceWithProgram = 1s;

bool compositorHasClipboard()
{
    const DesktopSession &session = DesktopSession::ofThisProcess();
    return session.offers("ext_data_control_manager_v1") || session.offers("zwlr_data_control_manager_v1");
}

} // namespace

WaylandInjector::WaylandInjector()
{
    if (compositorHasClipboard())
        m_thread = std::make_shared<WaylandThread>();
}

QCoro::Task<TextInjector::Outcome> WaylandInjector::insert(QString text)
{
    const QString trimmed = text.trimmed();
    if (trimmed.isEmpty() || !qobject_cast<QGuiApplication *>(QCoreApplication::instance()))
        co_return Outcome::Nothing;
    co_return co_await (m_thread ? insertByDataControl(trimmed) : insertByToolkit(trimmed));
}

QCoro::Task<TextInjector::Outcome> WaylandInjector::insertByDataControl(QString text)
{
    const bool mayPress = !ToolkitClipboard::focusIsLostOnUs();
    const std::shared_ptr<WaylandThread> thread = m_thread;
    const auto offer = [utf8 = text.toUtf8()](WaylandPaster &paster) { return paster.offer(utf8); };
    if (!co_await thread->run(offer))
        co_return Outcome::Nothing;
    const auto paste = [mayPress](WaylandPaster &paster) {
        return mayPress && paster.pressPaste() && paster.isFetched(patienceWithProgram);
    };
    co_return co_await thread->run(paste) ? Outcome::Pasted : Outcome::LeftOnClipboard;
}

/// A compositor takes Qt's clipboard from a window that has the focus, which none of ours is to have, though
/// Qt says in any case that it is set. Those that offer no other way take it from their X server at any time.
QCoro::Task<TextInjector::Outcome> WaylandInjector::insertByToolkit(QString text)
{
    if (QGuiApplication::platformName() != "xcb"_L1)
        co_return Outcome::Nothing;
    ToolkitClipboard::offer(text, QClipboard::Clipboard);
    co_return Outcome::LeftOnClipboard;
}

} // namespace orvane
