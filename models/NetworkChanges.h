#pragma once

namespace orvane {

/// Notices from its making on that this machine is connected to a network, or no longer.
class NetworkChanges
{
public:
    NetworkChanges();
    ~NetworkChanges();
    NetworkChanges(const NetworkChanges &) = delete;
    NetworkChanges &operator=(const NetworkChanges &) = delete;

    /// Readable as soon as something has changed; −1 when the system does not tell.
    [[nodiscard]] int descriptor() const { return m_descriptor; }

    /// Whether there is a way to a network beyond this machine and its neighbours.
    [[nodiscard]] static bool isConnected();

private:
    const int m_descriptor;
};

} // namespace orvane
