#pragma once

#include <QString>

/// The names under which a running application is spoken to on the session bus.
namespace orvane::ControlInterface {

inline const QString service = QStringLiteral("com.orvane.Orvane");
inline const QString path = QStringLiteral("/com/orvane/Orvane");
/// Our own interface; what its methods are called is what ControlService calls them.
inline const QString interface = QStringLiteral("com.orvane.Orvane1");
/// The desktop's interface for programs of which one runs.
inline const QString application = QStringLiteral("org.freedesktop.Application");
/// The name of an error whose text is meant for the user.
inline const QString refusal = QStringLiteral("com.orvane.Orvane1.Refused");

} // namespace orvane::ControlInterface
