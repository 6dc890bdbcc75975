#pragma once

#include <QObject>

#include <memory>

namespace orvane {

/// Whether the user's session is locked. This class itself never is: it is that of a desktop that does not
/// tell.
class SessionLock : public QObject
{
    Q_OBJECT

public:
    /// That of this session, never null. Learns the state of the moment a little later. Needs the application
    /// object.
    [[nodiscard]] static std::unique_ptr<SessionLock> ofThisSession();

    [[nodiscard]] virtual bool isLocked() const { return false; }
};

} // namespace orvane
