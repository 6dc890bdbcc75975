#include "desktop/KeyTap_x11.h"

#include "base/Async.h"

#include <QPointer>

#include <xcb/xcbext.h>
#include <xcb/xinput.h>
#include <xkbcommon/xkbcommon-keysyms.h>

#include <chrono>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

constexpr std::chrono::seconds retryInterval{2};

std::optional<TriggerKey> triggerKey(xkb_keysym_t symbol)
{
    switch (symbol) {
    case XKB_KEY_Super_R:
    case XKB_KEY_Control_R:
        return TriggerKey::RightCommand;
    case XKB_KEY_Alt_R:
    case XKB_KEY_ISO_Level3_Shift:
        return TriggerKey::RightOption;
    default:
        return std::nullopt;
    }
}

} // namespace

X11KeyTap::X11KeyTap() : m_toggle(XKB_KEY_F5), m_escape(XKB_KEY_Escape)
{
    m_retry.setInterval(retryInterval);
    connect(&m_retry, &QTimer::timeout, this, &X11KeyTap::tryAgain);
}

X11KeyTap::~X11KeyTap()
{
    m_installation.reset();
}

void X11KeyTap::install()
{
    if (m_installation)
        return;
    m_installation = std::make_unique<Scope>();
    spawn(connectToDisplay());
}

void X11KeyTap::uninstall()
{
    m_installation.reset();
    m_retry.stop();
    m_mapIsBeingRead = false; // who reads it goes no further
    disconnectFromDisplay();
}

bool X11KeyTap::grabIsMissing() const
{
    return m_toggle.isMissing() || m_escape.isMissing();
}

bool X11KeyTap::has(TriggerKey key) const
{
    if (!m_display)
        return false;
    const KeyboardMap &map = m_display->map;
    if (key == TriggerKey::RightCommand)
        return map.canBePressed(XKB_KEY_Control_R);
    return map.canBePressed(XKB_KEY_Alt_R) || map.canBePressed(XKB_KEY_ISO_Level3_Shift);
}

bool X11KeyTap::rightOptionTypes() const
{
    return m_display && m_display->map.canBePressed(XKB_KEY_ISO_Level3_Shift);
}

void X11KeyTap::setEscapeIntercepted(bool intercepted)
{
    if (std::exchange(m_escapeIsIntercepted, intercepted) == intercepted || !m_display)
        return;
    if (intercepted)
        m_escape.take(m_display->connection, m_display->map);
    else
        m_escape.release(m_display->connection, m_display->map);
    askForAnswer();
}

QCoro::Task<> X11KeyTap::connectToDisplay()
{
    m_retry.stop(); // begins anew when this attempt has ended
    std::shared_ptr<KeyDisplay> display = co_await (*m_installation)(offMainThread(KeyDisplay::open));
    if (!display) {
        m_retry.start();
        co_return;
    }
    m_display = std::move(display);
    m_readable = std::make_unique<QSocketNotifier>(xcb_get_file_descriptor(m_display->connection.get()),
                                                   QSocketNotifier::Read);
    connect(m_readable.get(), &QSocketNotifier::activated, this, &X11KeyTap::readEvents);
    takeGrabs();
    // What came before there was a notifier is read with what comes next, the answer about the grabs.
    Q_EMIT activeChanged();
}

QCoro::Task<> X11KeyTap::refreshMap()
{
    m_mapIsStale = true;
    if (std::exchange(m_mapIsBeingRead, true))
        co_return;
    std::optional<KeyboardMap> map;
    while (m_mapIsStale) {
        m_mapIsStale = false;
        map = co_await (*m_installation)(offMainThread(KeyDisplay::readMap));
    }
    m_mapIsBeingRead = false;
    if (!map || !m_display || *map == m_display->map)
        co_return;
    releaseGrabs(); // of the keys that had the symbols
    m_display->map = *map;
    m_down.clear();
    takeGrabs();
    Q_EMIT keysChanged();
}

void X11KeyTap::readEvents()
{
    // A receiver of a signal may let go of the display, or of this object.
    const QPointer self(this);
    const std::shared_ptr<KeyDisplay> display = m_display;
    xcb_connection_t *connection = display->connection.get();
    const auto handleAll = [this, &self, &display, connection] {
        while (self && m_display == display) {
            const XcbOwned<xcb_generic_event_t> event(xcb_poll_for_event(connection));
            if (!event)
                return true;
            handle(*event);
        }
        return false;
    };
    if (!handleAll())
        return;
    void *answer = nullptr;
    const bool isAnswered = m_answer && xcb_poll_for_reply(connection, *m_answer, &answer, nullptr) == 1;
    const XcbOwned<void> owned(answer);
    if (isAnswered)
        m_answer.reset();
    if (!handleAll()) // what came with the answer, such as refusals
        return;
    if (xcb_connection_has_error(connection) != 0) {
        disconnectFromDisplay();
        if (self && m_installation)
            m_retry.start();
    } else if (isAnswered && !m_answer) {
        settleGrabs();
    }
}

void X11KeyTap::handle(const xcb_generic_event_t &event)
{
    const int type = event.response_type & 0x7f; // without the mark of what other programs made up
    if (type == 0) {
        const auto &error = reinterpret_cast<const xcb_generic_error_t &>(event);
        m_toggle.handleError(error);
        m_escape.handleError(error);
    } else if (type == XCB_GE_GENERIC) {
        handleInput(event);
    } else if (type == m_display->xkbEvent) {
        spawn(refreshMap());
    } else if (type == XCB_KEY_PRESS || type == XCB_KEY_RELEASE) {
        const auto &key = reinterpret_cast<const xcb_key_press_event_t &>(event);
        const bool toggles = m_toggle.handleKey(key, m_display->map);
        const bool escapes = m_escape.handleKey(key, m_display->map);
        if (toggles)
            Q_EMIT togglePressed();
        else if (escapes && m_escapeIsIntercepted)
            Q_EMIT escapePressed();
    }
}

void X11KeyTap::handleInput(const xcb_generic_event_t &event)
{
    const auto &input = reinterpret_cast<const xcb_ge_generic_event_t &>(event);
    if (input.extension != m_display->inputOpcode)
        return;
    if (input.event_type == XCB_INPUT_RAW_KEY_PRESS || input.event_type == XCB_INPUT_RAW_KEY_RELEASE)
        handleRawKey(event);
    else if (input.event_type == XCB_INPUT_HIERARCHY)
        handleDevices(event);
}

void X11KeyTap::handleRawKey(const xcb_generic_event_t &event)
{
    const auto &raw = reinterpret_cast<const xcb_input_raw_key_press_event_t &>(event);
    const bool isPress = raw.event_type == XCB_INPUT_RAW_KEY_PRESS;
    const std::optional<TriggerKey> key = triggerKey(m_display->map.symbol(xcb_keycode_t(raw.detail)));
    if (!key) {
        if (isPress)
            Q_EMIT otherKeyPressed();
        return;
    }
    // A press of what is down already is a repetition, a release of what is not had no press here.
    const std::pair<int, int> place(raw.sourceid, int(raw.detail));
    if (m_down.contains(place) == isPress)
        return;
    if (isPress)
        m_down.insert(place);
    else
        m_down.remove(place);
    Q_EMIT triggerKeyChanged(*key, isPress);
}

/// The keys of a keyboard that is gone are up, and its number may be that of the next one.
void X11KeyTap::handleDevices(const xcb_generic_event_t &event)
{
    constexpr std::uint32_t gone =
        XCB_INPUT_HIERARCHY_MASK_SLAVE_REMOVED | XCB_INPUT_HIERARCHY_MASK_DEVICE_DISABLED;
    const auto &change = reinterpret_cast<const xcb_input_hierarchy_event_t &>(event);
    xcb_input_hierarchy_info_iterator_t infos = xcb_input_hierarchy_infos_iterator(&change);
    for (; infos.rem > 0; xcb_input_hierarchy_info_next(&infos)) {
        if ((infos.data->flags & gone) != 0)
            m_down.removeIf([device = int(infos.data->deviceid)](auto key) { return key.first == device; });
    }
}

void X11KeyTap::takeGrabs()
{
    m_toggle.take(m_display->connection, m_display->map);
    if (m_escapeIsIntercepted)
        m_escape.take(m_display->connection, m_display->map);
    askForAnswer();
}

void X11KeyTap::releaseGrabs()
{
    m_toggle.release(m_display->connection, m_display->map);
    m_escape.release(m_display->connection, m_display->map);
}

void X11KeyTap::askForAnswer()
{
    xcb_connection_t *connection = m_display->connection.get();
    if (m_answer)
        xcb_discard_reply(connection, *m_answer);
    m_answer = xcb_get_input_focus(connection).sequence;
    xcb_flush(connection);
}

void X11KeyTap::settleGrabs()
{
    m_toggle.settle();
    m_escape.settle();
    if (grabIsMissing())
        m_retry.start();
    else
        m_retry.stop();
    const std::pair missing(grabIsMissing(), escapeIsMissing());
    if (std::exchange(m_missing, missing) != missing)
        Q_EMIT grabIsMissingChanged();
}

void X11KeyTap::tryAgain()
{
    if (!m_display) {
        spawn(connectToDisplay());
        return;
    }
    for (KeyGrab *grab : {&m_toggle, &m_escape}) {
        if (grab->isMissing())
            grab->take(m_display->connection, m_display->map);
    }
    askForAnswer();
}

void X11KeyTap::disconnectFromDisplay()
{
    if (!m_display)
        return;
    // It may be what called us.
    m_readable->setEnabled(false);
    m_readable.release()->deleteLater();
    m_display.reset(); // with it the server forgets every grab
    m_answer.reset();
    m_toggle.reset();
    m_escape.reset();
    m_down.clear();
    const QPointer self(this);
    Q_EMIT activeChanged();
    if (self && std::exchange(m_missing, {}).first)
        Q_EMIT grabIsMissingChanged();
}

} // namespace orvane
