#pragma once

#include <QByteArray>
#include <QHash>

#include <cstdint>

namespace orvane {

/// What the compositor of this program's session says of itself.
class DesktopSession
{
public:
    /// Asked at the first call, which waits for the compositor: a millisecond, and 1 s for one that hangs.
    [[nodiscard]] static const DesktopSession &ofThisProcess();
    /// Asked anew, in the environment as it is now.
    [[nodiscard]] static DesktopSession ask();

    /// Whether a Wayland compositor answers. Then keys pressed at an X server reach nobody and those heard
    /// there are few, also while our windows are shown by the compositor's own X server.
    [[nodiscard]] bool isWayland() const { return m_isWayland; }
    /// Whether the compositor lets this program use that interface, in that version or a later one.
    [[nodiscard]] bool offers(const char *interface, std::uint32_t version = 1) const
    {
        return m_versions.value(interface) >= version;
    }
    /// Whether the compositor lets this program fill the clipboard without having the focus.
    [[nodiscard]] bool offersClipboard() const
    {
        return offers("ext_data_control_manager_v1") || offers("zwlr_data_control_manager_v1");
    }

private:
    bool m_isWayland = false;
    QHash<QByteArray, std::uint32_t> m_versions; // by interface
};

} // namespace orvane
