#include "desktop/wayland/WaylandPaster.h"

#include "desktop/wayland/FakeInput.h"
#include "desktop/wayland/VirtualKeyboard.h"

#include <linux/input-event-codes.h>

namespace orvane {

namespace {

constexpr std::chrono::seconds patienceWithCompositor{1};
/// For programs that read whatever is copied, such as those that keep a history of it.
constexpr std::chrono::milliseconds patienceWithWatchers{30};

std::unique_ptr<PressedKeys> keysOf(const WaylandDisplay &display)
{
    std::unique_ptr<PressedKeys> keys = VirtualKeyboard::make(display);
    return keys ? std::move(keys) : FakeInput::make(display);
}

} // namespace

void WaylandPaster::prepare()
{
    static_cast<void>(connectToCompositor());
}

bool WaylandPaster::offer(const QByteArray &text)
{
    if (!connectToCompositor() || !m_clipboard)
        return false;
    if (m_clipboard->offer(text))
        return true;
    // The compositor may be another by now.
    disconnectFromCompositor();
    return connectToCompositor() && m_clipboard && m_clipboard->offer(text);
}

bool WaylandPaster::pressPaste()
{
    if (!m_keys)
        return false;
    for (const QDeadlineTimer end(patienceWithWatchers); !end.hasExpired();) {
        if (!m_display->handleEvents(int(end.remainingTime())))
            break;
    }
    forgetFetches();
    m_keys->letGoOfModifiers();
    m_keys->set(KEY_LEFTSHIFT, true);
    m_keys->set(KEY_INSERT, true);
    m_keys->set(KEY_INSERT, false);
    m_keys->set(KEY_LEFTSHIFT, false);
    static_cast<void>(m_display->roundTrip(QDeadlineTimer(patienceWithCompositor)));
    return true;
}

void WaylandPaster::forgetFetches()
{
    m_fetchesBefore = m_clipboard ? m_clipboard->fetches() : 0;
}

bool WaylandPaster::isFetched(std::chrono::milliseconds patience)
{
    for (const QDeadlineTimer end(patience); m_clipboard && m_clipboard->fetches() == m_fetchesBefore;) {
        if (end.hasExpired() || !m_display->handleEvents(int(end.remainingTime())))
            return false;
    }
    return m_clipboard != nullptr;
}

bool WaylandPaster::connectToCompositor()
{
    if (m_display)
        return true;
    m_display = WaylandDisplay::open();
    if (!m_display)
        return false;
    m_clipboard = DataControlClipboard::make(*m_display);
    m_keys = keysOf(*m_display);
    if (!m_display->roundTrip(QDeadlineTimer(patienceWithCompositor))) {
        disconnectFromCompositor();
        return false;
    }
    m_readable =
        std::make_unique<QSocketNotifier>(wl_display_get_fd(m_display->get()), QSocketNotifier::Read);
    connect(m_readable.get(), &QSocketNotifier::activated, this, &WaylandPaster::readEvents);
    return true;
}

void WaylandPaster::readEvents()
{
    if (!m_display->handleEvents())
        disconnectFromCompositor();
}

void WaylandPaster::disconnectFromCompositor()
{
    if (m_readable) {
        m_readable->setEnabled(false);
        m_readable.release()->deleteLater(); // it may be what called us
    }
    m_keys.reset();
    m_clipboard.reset();
    m_display.reset();
}

} // namespace orvane
