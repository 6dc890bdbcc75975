#include "ui/WindowController.h"

#include "base/localization/Localization.h"
#include "settings/AppSettings.h"
#include "settings/UserDefaults.h"
#include "ui/DesktopAppearance.h"
#include "ui/QuickModule.h"
#include "ui/presentation/Desk.h"
#include "ui/presentation/TextTable.h"

#include <QGuiApplication>
#include <QScreen>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

constexpr auto placeKey = "mainWindowFrame"_L1;

/// With the right to come forward that the token stands for: toolkits look for it in the environment.
void bringForward(QWindow &window, const QString &activationToken)
{
    constexpr auto variable = "XDG_ACTIVATION_TOKEN";
    if (!activationToken.isEmpty())
        qputenv(variable, activationToken.toUtf8());
    if (window.windowStates() & Qt::WindowMinimized)
        window.setWindowStates(window.windowStates() & ~Qt::WindowMinimized);
    window.show();
    window.raise();
    window.requestActivate();
    qunsetenv(variable);
}

} // namespace

WindowController::WindowController(Services services, QObject *parent)
    : QObject(parent),
      m_services(std::move(services))
{}

WindowController::~WindowController()
{
    if (m_main)
        rememberPlace(*m_main);
    m_settingsWindow.reset();
    m_main.reset();
    m_windows.reset();
}

bool WindowController::prepare()
{
    if (!m_desk) {
        m_texts = std::make_unique<TextTable>(m_services.settings);
        m_desk = m_services.makeDesk();
        connect(m_desk.get(), &Desk::settingsRequested, this, [this] { showSettings(); });
        connect(m_desk.get(), &Desk::quitRequested, this, &WindowController::quitRequested);
        m_appearance = std::make_unique<DesktopAppearance>();
        connect(m_appearance.get(), &DesktopAppearance::changed, this, &WindowController::showAppearance);
    }
    if (!m_windows) {
        const auto maker = reinterpret_cast<WindowsMaker *>(
            loadedFunction(m_services.moduleFolder + u"/orvane-windows"_s, windowsMakerName, "The windows"));
        if (maker)
            m_windows.reset(maker(m_desk.get(), m_texts.get()));
        showAppearance();
    }
    if (!m_windows)
        Q_EMIT failed(Localization::text(u"Окна Orvane не открываются: программа установлена не полностью."));
    return m_windows != nullptr;
}

void WindowController::showMain(const QString &activationToken)
{
    if (!prepare())
        return;
    if (!m_main)
        make(m_main, Windows::Which::Main);
    if (!m_main)
        return;
    const bool appears = !m_main->isVisible();
    bringForward(*m_main, activationToken);
    if (appears)
        Q_EMIT mainAppeared();
}

void WindowController::showSettings(const QString &page, const QString &activationToken)
{
    if (!prepare())
        return;
    if (!page.isEmpty())
        m_desk->setSettingsPage(page);
    if (!m_settingsWindow)
        make(m_settingsWindow, Windows::Which::Settings);
    if (m_settingsWindow)
        bringForward(*m_settingsWindow, activationToken);
}

void WindowController::openFiles(const QList<QUrl> &files, const QString &activationToken)
{
    showMain(activationToken);
    if (m_desk && !files.isEmpty())
        m_desk->open(files);
}

void WindowController::make(std::unique_ptr<QWindow> &window, Windows::Which which)
{
    window = m_windows->make(which);
    if (!window)
        return;
    if (which == Windows::Which::Main)
        restorePlace(*window);
    // Not at once: the window is in the middle of closing.
    connect(
        window.get(), &QWindow::visibleChanged, this,
        [this, &window](bool isVisible) {
            if (!isVisible)
                close(window);
        },
        Qt::QueuedConnection);
}

void WindowController::close(std::unique_ptr<QWindow> &window)
{
    if (!window || window->isVisible())
        return;
    if (&window == &m_main)
        rememberPlace(*window);
    window.reset();
    if (!m_main && !m_settingsWindow)
        m_windows.reset();
}

void WindowController::restorePlace(QWindow &window) const
{
    const QVariantMap place = m_services.defaults.value(placeKey).toMap();
    const QSize size(place.value(u"width"_s).toInt(), place.value(u"height"_s).toInt());
    if (size.isEmpty())
        return;
    window.resize(size.expandedTo(window.minimumSize()));
    const QPoint position(place.value(u"x"_s).toInt(), place.value(u"y"_s).toInt());
    for (const QScreen *screen : QGuiApplication::screens()) {
        // Its upper edge can be taken hold of.
        if (screen->availableGeometry().contains(position + QPoint(window.width() / 2, 0)))
            window.setFramePosition(position);
    }
}

void WindowController::rememberPlace(const QWindow &window)
{
    if (window.windowStates() & (Qt::WindowMaximized | Qt::WindowFullScreen | Qt::WindowMinimized))
        return;
    m_services.defaults.set(placeKey, QVariantMap{{u"x"_s, window.framePosition().x()},
                                                  {u"y"_s, window.framePosition().y()},
                                                  {u"width"_s, window.width()},
                                                  {u"height"_s, window.height()}});
}

void WindowController::showAppearance()
{
    if (!m_windows)
        return;
    m_windows->setDark(m_appearance->isDark());
    m_windows->setAnimated(m_appearance->isAnimated());
}

} // namespace orvane
