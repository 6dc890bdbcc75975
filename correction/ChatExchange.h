#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <optional>

/// The chat completions of `llama-server`, as JSON.
namespace orvane::ChatExchange {

struct Message
{
    /// "system", "user" or "assistant".
    QString role;
    QString content;
};

[[nodiscard]] QByteArray body(const QList<Message> &messages, double temperature);

/// The first answer of a successful response; none when it has none.
[[nodiscard]] std::optional<QString> answer(const QByteArray &response);

/// Whether a failed response says that the conversation is too long for the model.
[[nodiscard]] bool isContextOverflow(const QByteArray &response);

} // namespace orvane::ChatExchange
