#pragma once

#include <QDBusConnection>
#include <QDBusMessage>

#include <QCoroTask>

#include <chrono>

/// Calls over a message bus that never keep the caller waiting without end. Main thread.
namespace orvane::BusCall {

inline constexpr std::chrono::seconds usualLimit{10};

/// The answer; an error message when none comes in that time.
[[nodiscard]] QCoro::Task<QDBusMessage> answerTo(QDBusMessage request, QDBusConnection bus,
                                                 std::chrono::milliseconds limit = usualLimit);

/// Who has the name; empty when nobody has. Starts nothing.
[[nodiscard]] QCoro::Task<QString> ownerOf(QString name, QDBusConnection bus);

} // namespace orvane::BusCall
