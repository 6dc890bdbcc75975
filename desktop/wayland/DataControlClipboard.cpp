#include "desktop/wayland/DataControlClipboard.h"

#include <QByteArrayView>
#include <QDeadlineTimer>

#include <array>
#include <cerrno>
#include <chrono>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace orvane {

namespace {

using namespace std::chrono_literals;

constexpr auto patienceWithCompositor = 1s;
constexpr auto patienceWithReader = 2s;

constexpr std::array textTypes = {"text/plain;charset=utf-8", "text/plain", "UTF8_STRING", "TEXT", "STRING"};
// Tell programs that keep a history of the clipboard not to keep this.
constexpr QByteArrayView passwordHint("x-kde-passwordManagerHint");
constexpr QByteArrayView concealed("org.nspasteboard.ConcealedType");

/// Whether the reader takes all of it; one that has gone raises a signal that the thread must not mind.
bool writeTo(int pipe, QByteArrayView bytes)
{
    ::fcntl(pipe, F_SETFL, O_NONBLOCK);
    for (const QDeadlineTimer end(patienceWithReader); !bytes.isEmpty();) {
        const ssize_t written = ::write(pipe, bytes.data(), size_t(bytes.size()));
        if (written > 0)
            bytes = bytes.sliced(written);
        else if (errno != EAGAIN && errno != EINTR)
            return false;
        pollfd writable{.fd = pipe, .events = POLLOUT, .revents = 0};
        if (!bytes.isEmpty() && ::poll(&writable, 1, int(end.remainingTime())) == 0)
            return false;
    }
    return true;
}

/// The interface by the name that it was standardised under; nothing but the name differs.
wl_interface standardised()
{
    wl_interface interface = zwlr_data_control_manager_v1_interface;
    interface.name = "ext_data_control_manager_v1";
    interface.version = 1;
    return interface;
}

} // namespace

std::unique_ptr<DataControlClipboard> DataControlClipboard::make(WaylandDisplay &display)
{
    static const wl_interface standard = standardised();
    constexpr std::uint32_t sincePrimary = 2;
    const wl_interface &wlroots = zwlr_data_control_manager_v1_interface;
    Manager manager(display.bind<zwlr_data_control_manager_v1>(standard, 1));
    bool hasPrimary = true;
    if (!manager) {
        manager.reset(display.bind<zwlr_data_control_manager_v1>(wlroots, sincePrimary));
        hasPrimary = display.versions().value(wlroots.name) >= sincePrimary;
    }
    Seat seat(display.bind<wl_seat>(wl_seat_interface, 1));
    if (!manager || !seat)
        return nullptr;
    return std::unique_ptr<DataControlClipboard>(
        new DataControlClipboard(display, std::move(manager), std::move(seat), hasPrimary));
}

DataControlClipboard::DataControlClipboard(WaylandDisplay &display, Manager manager, Seat seat,
                                           bool hasPrimary)
    : m_display(display),
      m_manager(std::move(manager)),
      m_seat(std::move(seat)),
      m_hasPrimary(hasPrimary)
{}

bool DataControlClipboard::offer(const QByteArray &text)
{
    m_text = text;
    if (!m_device)
        m_device = makeDevice();
    Source clipboard = makeSource();
    zwlr_data_control_device_v1_set_selection(m_device.get(), clipboard.get());
    m_clipboard = std::move(clipboard);
    if (m_hasPrimary) {
        Source primary = makeSource();
        zwlr_data_control_device_v1_set_primary_selection(m_device.get(), primary.get());
        m_primary = std::move(primary);
    }
    // What is refused, or taken over at once, has been cancelled by then.
    return m_display.roundTrip(QDeadlineTimer(patienceWithCompositor)) && m_clipboard;
}

DataControlClipboard::Device DataControlClipboard::makeDevice()
{
    Device device(zwlr_data_control_manager_v1_get_data_device(m_manager.get(), m_seat.get()));
    static constexpr zwlr_data_control_device_v1_listener listener{
        .data_offer =
            [](void *self, zwlr_data_control_device_v1 *, zwlr_data_control_offer_v1 *offer) {
                static_cast<DataControlClipboard *>(self)->m_offers.emplace_back(offer);
            },
        .selection =
            [](void *self, zwlr_data_control_device_v1 *, zwlr_data_control_offer_v1 *offer) {
                auto *clipboard = static_cast<DataControlClipboard *>(self);
                clipboard->replace(clipboard->m_offeredByClipboard, offer);
            },
        .finished = [](void *, zwlr_data_control_device_v1 *) {},
        .primary_selection =
            [](void *self, zwlr_data_control_device_v1 *, zwlr_data_control_offer_v1 *offer) {
                auto *clipboard = static_cast<DataControlClipboard *>(self);
                clipboard->replace(clipboard->m_offeredByPrimary, offer);
            }};
    zwlr_data_control_device_v1_add_listener(device.get(), &listener, this);
    return device;
}

DataControlClipboard::Source DataControlClipboard::makeSource()
{
    Source source(zwlr_data_control_manager_v1_create_data_source(m_manager.get()));
    static constexpr zwlr_data_control_source_v1_listener listener{
        .send = [](void *self, zwlr_data_control_source_v1 *, const char *type,
                   int pipe) { static_cast<DataControlClipboard *>(self)->send(type, pipe); },
        .cancelled =
            [](void *self, zwlr_data_control_source_v1 *cancelled) {
                static_cast<DataControlClipboard *>(self)->cancelled(cancelled);
            }};
    zwlr_data_control_source_v1_add_listener(source.get(), &listener, this);
    for (const char *type : textTypes)
        zwlr_data_control_source_v1_offer(source.get(), type);
    zwlr_data_control_source_v1_offer(source.get(), passwordHint.data());
    zwlr_data_control_source_v1_offer(source.get(), concealed.data());
    return source;
}

void DataControlClipboard::send(const char *type, int pipe)
{
    if (type == passwordHint) {
        static_cast<void>(writeTo(pipe, "secret"));
    } else if (type != concealed && writeTo(pipe, m_text)) {
        ++m_fetches;
    }
    ::close(pipe);
}

void DataControlClipboard::replace(zwlr_data_control_offer_v1 *&before, zwlr_data_control_offer_v1 *now)
{
    if (before != now)
        std::erase_if(m_offers, [before](const Offer &offer) { return offer.get() == before; });
    before = now;
}

void DataControlClipboard::cancelled(zwlr_data_control_source_v1 *source)
{
    if (source == m_clipboard.get())
        m_clipboard.reset();
    else if (source == m_primary.get())
        m_primary.reset();
    if (m_clipboard || m_primary)
        return;
    m_device.reset();
    m_offers.clear();
    m_offeredByClipboard = m_offeredByPrimary = nullptr;
}

} // namespace orvane
