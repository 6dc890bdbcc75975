#pragma once

#include "base/OneTimeEvent.h"

#include <QDBusConnection>
#include <QObject>
#include <QVariantMap>

#include <QCoroTask>

#include <chrono>
#include <memory>
#include <optional>

namespace orvane {

/// One request to the desktop's portal, which may ask the user before it answers. Main thread.
class PortalRequest : public QObject
{
    Q_OBJECT

public:
    static inline const QString service = QStringLiteral("org.freedesktop.portal.Desktop");
    static inline const QString path = QStringLiteral("/org/freedesktop/portal/desktop");

    /// For the portal alone: at the beginning of a session everything starts at once, it among them.
    static constexpr std::chrono::seconds startLimit{60};

    struct Response
    {
        /// 0 granted, 1 refused by the user, 2 ended otherwise; some portals say 2 of what they have granted.
        uint code = 2;
        QVariantMap results{};
    };

    /// Tells the portal which program has this connection. Before anything else is asked over it, and again
    /// when the portal has been started anew; older ones do not have it.
    [[nodiscard]] static QCoro::Task<> introduce(QDBusConnection bus, std::chrono::milliseconds limit);
    /// The version of one of its interfaces; 0 when it has none. Starts the portal.
    [[nodiscard]] static QCoro::Task<uint> versionOf(QString interface, QDBusConnection bus,
                                                     std::chrono::milliseconds limit);

    /// Calls a method with these arguments and the options. None when the portal refuses the call, goes, or
    /// has not answered within the limit.
    [[nodiscard]] static QCoro::Task<std::optional<Response>> ask(QString interface, QString method,
                                                                  QVariantList arguments, QVariantMap options,
                                                                  QDBusConnection bus,
                                                                  std::chrono::milliseconds limit);

private Q_SLOTS:
    void responded(uint code, const QVariantMap &results);

private:
    PortalRequest(const QDBusConnection &bus, const QString &token);

    std::optional<Response> m_response;
    std::shared_ptr<OneTimeEvent> m_ended = OneTimeEvent::create();
};

} // namespace orvane
