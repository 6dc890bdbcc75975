#include "desktop/wayland/WaylandInjector.h"

#include "base/Async.h"
#include "base/OneTimeEvent.h"
#include "desktop/DesktopSession.h"
#include "desktop/ToolkitClipboard.h"
#include "desktop/wayland/RemoteDesktopPaste.h"

#include <QGuiApplication>

#include <chrono>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orvane {

namespace {

/// For the focused program to ask for the text once it was told to paste.
constexpr auto patienceWithProgram = 1s;

QCoro::Task<> forgetFetches(std::shared_ptr<WaylandThread> thread)
{
    co_await thread->run([](WaylandPaster &paster) {
        paster.forgetFetches();
        return true;
    });
}

} // namespace

WaylandInjector::WaylandInjector()
{
    if (DesktopSession::ofThisProcess().offersClipboard())
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
    if (!mayPress)
        co_return Outcome::LeftOnClipboard;
    const auto press = [](WaylandPaster &paster) { return paster.pressPaste(); };
    const auto aboutToPress = [thread] { spawn(forgetFetches(thread)); };
    const bool isPressed = co_await thread->run(press) || co_await RemoteDesktopPaste::press(aboutToPress);
    const auto fetched = [](WaylandPaster &paster) { return paster.isFetched(patienceWithProgram); };
    co_return isPressed &&co_await thread->run(fetched) ? Outcome::Pasted : Outcome::LeftOnClipboard;
}

/// A compositor takes Qt's clipboard from a window that has the focus, which none of ours is to have, though
/// Qt says in any case that it is set. Those that offer no other way take it from their X server at any time.
QCoro::Task<TextInjector::Outcome> WaylandInjector::insertByToolkit(QString text)
{
    if (QGuiApplication::platformName() != "xcb"_L1)
        co_return Outcome::Nothing;
    // A compositor may read it at once, to keep it; only who does so after the keys has pasted.
    struct Pasting
    {
        bool isTold = false;
        std::shared_ptr<OneTimeEvent> isAsked = OneTimeEvent::create();
    };
    const bool mayPress = !ToolkitClipboard::focusIsLostOnUs();
    const auto pasting = std::make_shared<Pasting>();
    const auto asked = [pasting] {
        if (pasting->isTold)
            pasting->isAsked->happen();
    };
    ToolkitClipboard::offer(text, QClipboard::Clipboard, asked);
    ToolkitClipboard::offer(text, QClipboard::Selection, asked); // what Shift+Insert pastes in terminals
    if (!mayPress)
        co_return Outcome::LeftOnClipboard;
    const bool isPressed = co_await RemoteDesktopPaste::press([pasting] { pasting->isTold = true; });
    co_return isPressed &&co_await pasting->isAsked->waitFor(patienceWithProgram) ? Outcome::Pasted
                                                                                  : Outcome::LeftOnClipboard;
}

} // namespace orvane
