#pragma once

#include "desktop/wayland/WaylandDisplay.h"

#include <wlr-data-control-unstable-v1.h>

#include <QByteArray>

#include <memory>
#include <vector>

namespace orvane {

/// A text that other programs get when they paste, offered without having the focus. One thread at a time.
class DataControlClipboard
{
public:
    /// Null where no program may. The display outlives it.
    [[nodiscard]] static std::unique_ptr<DataControlClipboard> make(WaylandDisplay &display);

    DataControlClipboard(const DataControlClipboard &) = delete;
    DataControlClipboard &operator=(const DataControlClipboard &) = delete;

    /// Offers the text, in UTF-8, by the clipboard and by the primary selection, marked as nothing for a
    /// history of the clipboard, until other programs take them over. False when the compositor does not take
    /// it.
    [[nodiscard]] bool offer(const QByteArray &text);
    /// How often any text was asked for so far, and taken to its end.
    [[nodiscard]] int fetches() const { return m_fetches; }

private:
    using Manager = WaylandOwned<zwlr_data_control_manager_v1, zwlr_data_control_manager_v1_destroy>;
    using Seat = WaylandOwned<wl_seat, wl_seat_destroy>;
    using Device = WaylandOwned<zwlr_data_control_device_v1, zwlr_data_control_device_v1_destroy>;
    using Offer = WaylandOwned<zwlr_data_control_offer_v1, zwlr_data_control_offer_v1_destroy>;
    using Source = WaylandOwned<zwlr_data_control_source_v1, zwlr_data_control_source_v1_destroy>;

    DataControlClipboard(WaylandDisplay &display, Manager manager, Seat seat, bool hasPrimary);

    [[nodiscard]] Device makeDevice();
    [[nodiscard]] Source makeSource();
    void send(const char *type, int pipe);
    /// Another program's offer, or none, has taken the place of that one.
    void replace(zwlr_data_control_offer_v1 *&before, zwlr_data_control_offer_v1 *now);
    void cancelled(zwlr_data_control_source_v1 *source);

    WaylandDisplay &m_display;
    const Manager m_manager;
    const Seat m_seat;
    const bool m_hasPrimary;
    QByteArray m_text;
    int m_fetches = 0;
    Device m_device; ///< null while nothing is offered: it hears of everything that anybody copies
    /// What others offer. The compositor may name one until it is replaced: none ends before.
    std::vector<Offer> m_offers;
    zwlr_data_control_offer_v1 *m_offeredByClipboard = nullptr;
    zwlr_data_control_offer_v1 *m_offeredByPrimary = nullptr;
    Source m_clipboard;
    Source m_primary;
};

} // namespace orvane
