#pragma once

#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

namespace orvane::test {

/// A session bus of a test's own that lives as long as this object.
class SessionBus
{
public:
    /// What programs ask for is started as on the user's own bus.
    SessionBus();
    /// Only what stands here, such as "ca.desrt.dconf", is started.
    explicit SessionBus(const QStringList &services);
    ~SessionBus();
    SessionBus(const SessionBus &) = delete;
    SessionBus &operator=(const SessionBus &) = delete;

    /// The value of DBUS_SESSION_BUS_ADDRESS for programs that are to use it.
    [[nodiscard]] QString address() const { return m_address; }

private:
    void start(const QString &configuration);

    QTemporaryDir m_folder;
    QProcess m_daemon;
    QString m_address;
};

} // namespace orvane::test
