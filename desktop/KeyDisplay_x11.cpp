#include "desktop/KeyDisplay_x11.h"

#include <xcb/xinput.h>
#include <xkbcommon/xkbcommon-x11.h>
#define explicit explicit_ // the C header has a member of that name
#include <xcb/xkb.h>
#undef explicit

namespace orvane {

namespace {

/// The first of the extension's events; nothing when there is no such extension.
std::optional<std::uint8_t> setUpXkb(const XcbConnection &connection)
{
    std::uint8_t firstEvent = 0;
    if (xkb_x11_setup_xkb_extension(connection.get(), 1, 0, XKB_X11_SETUP_XKB_EXTENSION_NO_FLAGS, nullptr,
                                    nullptr, &firstEvent, nullptr) == 0)
        return std::nullopt;
    return firstEvent;
}

/// Keys, and keyboards that come and go. Raw events of the second revision arrive whoever grabs the keyboard;
/// those of the first do not.
bool selectInput(const XcbConnection &connection)
{
    const XcbOwned<xcb_input_xi_query_version_reply_t> version(xcb_input_xi_query_version_reply(
        connection.get(), xcb_input_xi_query_version(connection.get(), 2, 2), nullptr));
    if (!version || version->major_version < 2 || (version->major_version == 2 && version->minor_version < 1))
        return false;
    struct
    {
        xcb_input_event_mask_t keys = {.deviceid = XCB_INPUT_DEVICE_ALL_MASTER, .mask_len = 1};
        std::uint32_t keyEvents =
            XCB_INPUT_XI_EVENT_MASK_RAW_KEY_PRESS | XCB_INPUT_XI_EVENT_MASK_RAW_KEY_RELEASE;
        xcb_input_event_mask_t devices = {.deviceid = XCB_INPUT_DEVICE_ALL, .mask_len = 1};
        std::uint32_t deviceEvents = XCB_INPUT_XI_EVENT_MASK_HIERARCHY;
    } const selection;
    const XcbOwned<xcb_generic_error_t> error(xcb_request_check(
        connection.get(),
        xcb_input_xi_select_events_checked(connection.get(), connection.root(), 2, &selection.keys)));
    return error == nullptr;
}

/// Asks to be told of new keyboard maps, and that a held key repeats its press without releases between.
void selectMapChanges(const XcbConnection &connection)
{
    constexpr std::uint16_t events = XCB_XKB_EVENT_TYPE_NEW_KEYBOARD_NOTIFY | XCB_XKB_EVENT_TYPE_MAP_NOTIFY;
    constexpr std::uint16_t parts = XCB_XKB_MAP_PART_KEY_SYMS | XCB_XKB_MAP_PART_MODIFIER_MAP;
    xcb_xkb_select_events(connection.get(), XCB_XKB_ID_USE_CORE_KBD, events, 0, events, parts, parts,
                          nullptr);
    const std::uint32_t flag = XCB_XKB_PER_CLIENT_FLAG_DETECTABLE_AUTO_REPEAT;
    const XcbOwned<xcb_xkb_per_client_flags_reply_t> answer(xcb_xkb_per_client_flags_reply(
        connection.get(),
        xcb_xkb_per_client_flags(connection.get(), XCB_XKB_ID_USE_CORE_KBD, flag, flag, 0, 0, 0), nullptr));
}

} // namespace

std::shared_ptr<KeyDisplay> KeyDisplay::open()
{
    XcbConnection connection = XcbConnection::open();
    const std::optional<std::uint8_t> xkbEvent = connection ? setUpXkb(connection) : std::nullopt;
    if (!xkbEvent)
        return nullptr;
    // Changes are told of before the map is read, so that none is missed.
    selectMapChanges(connection);
    std::optional<KeyboardMap> map = KeyboardMap::read(connection.get());
    const xcb_query_extension_reply_t *input = xcb_get_extension_data(connection.get(), &xcb_input_id);
    if (!map || input == nullptr || input->present == 0 || !selectInput(connection))
        return nullptr;
    return std::make_shared<KeyDisplay>(KeyDisplay{.connection = std::move(connection),
                                                   .map = *std::move(map),
                                                   .inputOpcode = input->major_opcode,
                                                   .xkbEvent = *xkbEvent});
}

std::optional<KeyboardMap> KeyDisplay::readMap()
{
    const XcbConnection connection = XcbConnection::open();
    if (!connection || !setUpXkb(connection))
        return std::nullopt;
    return KeyboardMap::read(connection.get());
}

} // namespace orvane
