#pragma once

#include <QList>

#include <xcb/xcb.h>
#include <xkbcommon/xkbcommon.h>

#include <array>
#include <cstdint>
#include <optional>

namespace orvane {

/// What the keys of an X11 keyboard mean: for each layout the symbol of each key without modifiers, and which
/// keys are modifiers.
class KeyboardMap
{
public:
    /// Asks the server and waits for its answers; nothing when the server knows no keyboard maps. Uses the
    /// XKB extension, which must be set up on the connection.
    [[nodiscard]] static std::optional<KeyboardMap> read(xcb_connection_t *connection);

    /// The symbol of a key in the first layout.
    [[nodiscard]] xkb_keysym_t symbol(xcb_keycode_t key) const { return m_layouts.constFirst().at(key); }
    /// The keys that have the symbol in the first layout.
    [[nodiscard]] QList<xcb_keycode_t> keysWith(xkb_keysym_t symbol) const;
    /// Whether a key that a keyboard can really have has the symbol, in any layout.
    [[nodiscard]] bool canBePressed(xkb_keysym_t symbol) const;
    /// The key that has the symbol in the active layout, else in any other.
    [[nodiscard]] std::optional<xcb_keycode_t> keyInAnyLayout(xkb_keysym_t symbol) const;
    /// A key that acts as the modifier, best the one with the wanted symbol.
    [[nodiscard]] std::optional<xcb_keycode_t> modifierKey(xcb_map_index_t modifier,
                                                           xkb_keysym_t wanted) const;
    /// The keys that change what others mean while they are held: all modifiers but the locks.
    [[nodiscard]] QList<xcb_keycode_t> heldModifierKeys() const;
    /// Every combination of the locks Caps, Num and Scroll as modifier masks, beginning with none.
    [[nodiscard]] QList<std::uint16_t> lockCombinations() const;

    bool operator==(const KeyboardMap &) const = default;

private:
    using Symbols = std::array<xkb_keysym_t, 256>;

    QList<Symbols> m_layouts; // never empty
    int m_activeLayout = 0;
    xcb_keycode_t m_virtualLevel3 = 0; // a key of every map that stands on no keyboard; 0 for none
    std::array<QList<xcb_keycode_t>, 8> m_modifiers; // by xcb_map_index_t
};

} // namespace orvane
