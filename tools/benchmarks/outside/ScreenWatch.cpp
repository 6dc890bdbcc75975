#include "tools/benchmarks/outside/ScreenWatch.h"

namespace orvane {

namespace {

constexpr int bytesPerPixel = 4;

} // namespace

ScreenWatch::ScreenWatch() : m_connection(XcbConnection::open())
{
    if (!m_connection)
        qFatal("there is no display");
    const std::uint32_t events = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
    xcb_change_window_attributes(m_connection.get(), m_connection.root(), XCB_CW_EVENT_MASK, &events);
    const XcbOwned<xcb_get_geometry_reply_t> screen(xcb_get_geometry_reply(
        m_connection.get(), xcb_get_geometry(m_connection.get(), m_connection.root()), nullptr));
    m_width = screen->width;
    m_height = screen->height;
}

void ScreenWatch::begin()
{
    m_before = picture(0, 0, m_width, m_height);
    readEvents();
    m_overlay = XCB_NONE;
    m_hasDocked = false;
}

bool ScreenWatch::hasDockedIcon()
{
    readEvents();
    return m_hasDocked;
}

bool ScreenWatch::showsOverlay()
{
    readEvents();
    if (m_overlay == XCB_NONE)
        return false;
    const XcbOwned<xcb_get_geometry_reply_t> place(
        xcb_get_geometry_reply(m_connection.get(), xcb_get_geometry(m_connection.get(), m_overlay), nullptr));
    if (!place)
        return false;
    const int middle = place->y + place->height / 2;
    const QByteArray row = picture(place->x, middle, place->width, 1);
    const QByteArray under = m_before.mid((qsizetype(middle) * m_width + place->x) * bytesPerPixel,
                                          qsizetype(place->width) * bytesPerPixel);
    const bool isBlank = row.first(row.size() - bytesPerPixel) == row.sliced(bytesPerPixel);
    return row != under && !isBlank;
}

bool ScreenWatch::hasTray() const
{
    constexpr QByteArrayView name("_NET_SYSTEM_TRAY_S0");
    const XcbOwned<xcb_intern_atom_reply_t> atom(xcb_intern_atom_reply(
        m_connection.get(), xcb_intern_atom(m_connection.get(), 0, name.size(), name.data()), nullptr));
    const XcbOwned<xcb_get_selection_owner_reply_t> owner(xcb_get_selection_owner_reply(
        m_connection.get(), xcb_get_selection_owner(m_connection.get(), atom->atom), nullptr));
    return owner && owner->owner != XCB_NONE;
}

void ScreenWatch::readEvents()
{
    while (const XcbOwned<xcb_generic_event_t> event{xcb_poll_for_event(m_connection.get())}) {
        if (event->response_type == XCB_MAP_NOTIFY) {
            const auto &mapped = reinterpret_cast<const xcb_map_notify_event_t &>(*event);
            if (mapped.override_redirect != 0)
                m_overlay = mapped.window;
        } else if (event->response_type == XCB_REPARENT_NOTIFY) {
            const auto &moved = reinterpret_cast<const xcb_reparent_notify_event_t &>(*event);
            m_hasDocked = m_hasDocked || moved.parent != m_connection.root();
        }
    }
}

QByteArray ScreenWatch::picture(int x, int y, int width, int height) const
{
    const XcbOwned<xcb_get_image_reply_t> image(xcb_get_image_reply(
        m_connection.get(),
        xcb_get_image(m_connection.get(), XCB_IMAGE_FORMAT_Z_PIXMAP, m_connection.root(), std::int16_t(x),
                      std::int16_t(y), std::uint16_t(width), std::uint16_t(height), ~0U),
        nullptr));
    if (!image)
        return {};
    return {reinterpret_cast<const char *>(xcb_get_image_data(image.get())),
            xcb_get_image_data_length(image.get())};
}

} // namespace orvane
