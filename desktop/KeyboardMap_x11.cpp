#include "desktop/KeyboardMap_x11.h"

#include "desktop/Xcb.h"

#include <xkbcommon/xkbcommon-keysyms.h>
#include <xkbcommon/xkbcommon-x11.h>

#include <algorithm>

namespace orvane {

namespace {

struct Unref
{
    void operator()(xkb_context *context) const { xkb_context_unref(context); }
    void operator()(xkb_keymap *keymap) const { xkb_keymap_unref(keymap); }
    void operator()(xkb_state *state) const { xkb_state_unref(state); }
};
template <typename Type>
using Owned = std::unique_ptr<Type, Unref>;

bool actsWhileHeld(xkb_keysym_t symbol)
{
    return (symbol >= XKB_KEY_Shift_L && symbol <= XKB_KEY_Hyper_R) || symbol == XKB_KEY_Mode_switch ||
           symbol == XKB_KEY_ISO_Level3_Shift || symbol == XKB_KEY_ISO_Level5_Shift;
}

bool locks(xkb_keysym_t symbol)
{
    return symbol == XKB_KEY_Caps_Lock || symbol == XKB_KEY_Shift_Lock || symbol == XKB_KEY_Num_Lock ||
           symbol == XKB_KEY_Scroll_Lock;
}

} // namespace

std::optional<KeyboardMap> KeyboardMap::read(xcb_connection_t *connection)
{
    const Owned<xkb_context> context(xkb_context_new(XKB_CONTEXT_NO_DEFAULT_INCLUDES));
    const int device = xkb_x11_get_core_keyboard_device_id(connection);
    if (!context || device < 0)
        return std::nullopt;
    const Owned<xkb_keymap> keymap(
        xkb_x11_keymap_new_from_device(context.get(), connection, device, XKB_KEYMAP_COMPILE_NO_FLAGS));
    if (!keymap)
        return std::nullopt;
    const Owned<xkb_state> state(xkb_x11_state_new_from_device(keymap.get(), connection, device));
    const XcbOwned<xcb_get_modifier_mapping_reply_t> modifiers(
        xcb_get_modifier_mapping_reply(connection, xcb_get_modifier_mapping(connection), nullptr));
    if (!state || !modifiers)
        return std::nullopt;

    KeyboardMap map;
    map.m_layouts.resize(std::max<qsizetype>(1, xkb_keymap_num_layouts(keymap.get())));
    for (qsizetype layout = 0; layout < map.m_layouts.size(); ++layout) {
        for (xkb_keycode_t key = xkb_keymap_min_keycode(keymap.get());
             key <= std::min<xkb_keycode_t>(255, xkb_keymap_max_keycode(keymap.get())); ++key) {
            const xkb_keysym_t *symbols = nullptr;
            if (xkb_keymap_key_get_syms_by_level(keymap.get(), key, xkb_layout_index_t(layout), 0,
                                                 &symbols) == 1)
                map.m_layouts[layout].at(key) = *symbols;
        }
    }
    map.m_activeLayout = int(xkb_state_serialize_layout(state.get(), XKB_STATE_LAYOUT_EFFECTIVE));

    if (const xkb_keycode_t virtualKey = xkb_keymap_key_by_name(keymap.get(), "LVL3"); virtualKey <= 255)
        map.m_virtualLevel3 = xcb_keycode_t(virtualKey);

    const xcb_keycode_t *keys = xcb_get_modifier_mapping_keycodes(modifiers.get());
    for (QList<xcb_keycode_t> &row : map.m_modifiers) {
        for (int i = 0; i < modifiers->keycodes_per_modifier; ++i, ++keys) {
            if (*keys != 0)
                row.append(*keys);
        }
    }
    return map;
}

QList<xcb_keycode_t> KeyboardMap::keysWith(xkb_keysym_t symbol) const
{
    QList<xcb_keycode_t> keys;
    const Symbols &symbols = m_layouts.constFirst();
    for (size_t key = 0; key < symbols.size(); ++key) {
        if (symbols.at(key) == symbol)
            keys.append(xcb_keycode_t(key));
    }
    return keys;
}

bool KeyboardMap::canBePressed(xkb_keysym_t symbol) const
{
    return std::any_of(m_layouts.begin(), m_layouts.end(), [this, symbol](const Symbols &symbols) {
        for (size_t key = 0; key < symbols.size(); ++key) {
            if (symbols.at(key) == symbol && key != m_virtualLevel3)
                return true;
        }
        return false;
    });
}

std::optional<xcb_keycode_t> KeyboardMap::keyInAnyLayout(xkb_keysym_t symbol) const
{
    const auto keyIn = [symbol](const Symbols &symbols) -> std::optional<xcb_keycode_t> {
        const auto found = std::find(symbols.begin(), symbols.end(), symbol);
        if (found == symbols.end())
            return std::nullopt;
        return xcb_keycode_t(found - symbols.begin());
    };
    if (m_activeLayout < m_layouts.size()) {
        if (const auto key = keyIn(m_layouts.at(m_activeLayout)))
            return key;
    }
    for (const Symbols &symbols : m_layouts) {
        if (const auto key = keyIn(symbols))
            return key;
    }
    return std::nullopt;
}

std::optional<xcb_keycode_t> KeyboardMap::modifierKey(xcb_map_index_t modifier, xkb_keysym_t wanted) const
{
    const QList<xcb_keycode_t> &keys = m_modifiers.at(modifier);
    if (keys.isEmpty())
        return std::nullopt;
    const auto best = std::find_if(keys.begin(), keys.end(),
                                   [this, wanted](xcb_keycode_t key) { return symbol(key) == wanted; });
    return best == keys.end() ? keys.constFirst() : *best;
}

QList<xcb_keycode_t> KeyboardMap::heldModifierKeys() const
{
    QList<xcb_keycode_t> held;
    for (size_t key = 0; key < m_layouts.constFirst().size(); ++key) {
        const auto code = xcb_keycode_t(key);
        const bool isMapped = std::any_of(m_modifiers.begin(), m_modifiers.end(),
                                          [code](const auto &keys) { return keys.contains(code); });
        // A key may act on a modifier without being mapped to it, as AltGr does.
        if ((isMapped || actsWhileHeld(symbol(code))) && !locks(symbol(code)))
            held.append(code);
    }
    return held;
}

QList<std::uint16_t> KeyboardMap::lockCombinations() const
{
    QList<std::uint16_t> combinations{0};
    for (size_t modifier = 0; modifier < m_modifiers.size(); ++modifier) {
        // The Caps Lock key may act as another modifier; Num and Scroll have none of their own.
        const QList<xcb_keycode_t> &keys = m_modifiers.at(modifier);
        const bool isLock = modifier == XCB_MAP_INDEX_LOCK ||
                            std::any_of(keys.begin(), keys.end(), [this](xcb_keycode_t key) {
                                return symbol(key) == XKB_KEY_Num_Lock || symbol(key) == XKB_KEY_Scroll_Lock;
                            });
        if (!isLock)
            continue;
        for (qsizetype i = 0, count = combinations.size(); i < count; ++i)
            combinations.append(std::uint16_t(combinations.at(i) | 1U << modifier));
    }
    return combinations;
}

} // namespace orvane
