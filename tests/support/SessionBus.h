#pragma once

#include <QProcess>
#include <QString>
#include <QTemporaryDir>

namespace orvane::test {

/// A session bus of a test's own that lives as long as this object.
class SessionBus
{
public:
    SessionBus();
    ~SessionBus();
    SessionBus(const SessionBus &) = delete;
    SessionBus &operator=(const SessionBus &) = delete;

    /// The value of DBUS_SESSION_BUS_ADDRESS for programs that are to use it.
    [[nodiscard]] QString address() const { return m_address; }

private:
    QTemporaryDir m_folder;
    QProcess m_daemon;
    QString m_address;
};

} // namespace orvane::test
