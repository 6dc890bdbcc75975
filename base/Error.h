#pragma once

#include <QByteArray>
#include <QString>

#include <exception>
#include <stop_token>

namespace orvane {

/// Base of every failure in the program. The description is the text the user reads: one sentence,
/// already in the interface language where the text is translated.
class Error : public std::exception
{
public:
    explicit Error(const QString &description) : m_description(description.toUtf8()) {}

    [[nodiscard]] QString description() const { return QString::fromUtf8(m_description); }
    [[nodiscard]] const char *what() const noexcept override { return m_description.constData(); }

private:
    QByteArray m_description;
};

/// The operation was cancelled by whoever started it. Never shown to the user.
class Cancelled : public Error
{
public:
    Cancelled() : Error(QString()) {}
};

/// What the user is told of any failure: an Error's own description; never the words of a library.
[[nodiscard]] QString descriptionOf(const std::exception &failure);

inline void throwIfCancelled(const std::stop_token &stop)
{
    if (stop.stop_requested())
        throw Cancelled();
}

} // namespace orvane
