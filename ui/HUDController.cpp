#include "ui/HUDController.h"

#include "base/Async.h"
#include "desktop/WindowBlending.h"
#include "ui/DictationHUDModel.h"
#include "ui/HUDPlacement.h"
#include "ui/QuickModule.h"

#include <QCursor>
#include <QGuiApplication>
#include <QScreen>
#include <QToolTip>
#include <QWindow>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orvane {

namespace {

constexpr auto untilShownAgain = 120ms;
constexpr auto lengthOfNotice = 3s;
constexpr auto untilHelp = 600ms;

// Never takes the focus; the window manager does not see it, so it is on every desktop and over
// full-screen windows.
constexpr Qt::WindowFlags windowFlags = Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint |
                                        Qt::BypassWindowManagerHint | Qt::WindowDoesNotAcceptFocus |
                                        Qt::NoDropShadowWindowHint;

} // namespace

HUDController::HUDController(DictationHUDModel &hud, const QString &moduleFolder, Fallback fallback)
    : m_hud(hud),
      m_moduleFile(moduleFolder + u"/orvane-indicator"_s),
      m_fallback(std::move(fallback))
{
    m_again.setSingleShot(true);
    m_again.setInterval(untilShownAgain);
    m_again.callOnTimeout(&m_again, [this] { present(); });
    m_endOfNotice.setSingleShot(true);
    m_endOfNotice.setInterval(lengthOfNotice);
    m_endOfNotice.callOnTimeout(&m_endOfNotice, [this] {
        if (m_isOfDictation)
            m_hud.setNotice({});
        else
            hide();
    });
    m_help.setSingleShot(true);
    m_help.setInterval(untilHelp);
    m_help.callOnTimeout(&m_help, [this] { showHelp(); });
    QObject::connect(&hud, &DictationHUDModel::hoveredChipChanged, &m_help, [this] {
        QToolTip::hideText();
        m_help.start(); // also for none: then it ends in nothing
    });
}

HUDController::~HUDController()
{
    m_scope.end();
    HUDController::hide();
}

void HUDController::show()
{
    m_isOfDictation = true;
    m_endOfNotice.stop();
    m_hud.setNotice({});
    appear();
}

void HUDController::hide()
{
    m_isOfDictation = false;
    m_wantsVisible = false;
    m_again.stop();
    m_endOfNotice.stop();
    if (m_isReady)
        m_window->hide();
    m_hud.setHoveredChip(-1);
    m_hud.clearLiveText(); // where nobody sees the capsule shrink
}

void HUDController::notice(const QString &text)
{
    if (m_cannotBeMade) {
        m_fallback(text);
        return;
    }
    m_hud.setNotice(text);
    m_endOfNotice.start();
    appear();
}

void HUDController::appear()
{
    m_wantsVisible = true;
    if (m_isReady) {
        present();
        m_again.start();
    } else if (!m_isBeingMade) {
        m_isBeingMade = true;
        spawn(makeWindow());
    }
}

QCoro::Task<> HUDController::makeWindow()
{
    // A Wayland compositor would give a window of its own client the focus, and the place that it likes.
    if (QGuiApplication::platformName().startsWith("wayland"_L1)) {
        giveUp();
        co_return;
    }
    const auto load = [file = m_moduleFile] {
        return loadedFunction(file, indicatorWindowMakerName, "The dictation indicator");
    };
    const auto maker = reinterpret_cast<IndicatorWindowMaker *>(co_await m_scope(offMainThread(load)));
    if (!maker) {
        giveUp();
        co_return;
    }
    m_window.reset(maker(&m_hud, &windowsAreBlended, [this] {
        m_isReady = true;
        if (m_wantsVisible)
            appear();
    }));
    m_window->setFlags(windowFlags);
}

void HUDController::giveUp()
{
    m_cannotBeMade = true;
    if (const QString notice = m_hud.notice(); !notice.isEmpty())
        m_fallback(notice);
}

void HUDController::present()
{
    reposition();
    m_window->show();
    m_window->raise();
}

void HUDController::reposition()
{
    QList<HUDPlacement::Screen> screens;
    for (const QScreen *screen : QGuiApplication::screens()) // the primary one comes first
        screens.append({.frame = screen->geometry(), .available = screen->availableGeometry()});
    m_window->setPosition(HUDPlacement::position(m_window->size(), QCursor::pos(), screens));
}

void HUDController::showHelp()
{
    if (const int chip = m_hud.hoveredChip(); chip >= 0)
        QToolTip::showText(QCursor::pos(), m_hud.chipHelps().at(chip));
}

} // namespace orvane
