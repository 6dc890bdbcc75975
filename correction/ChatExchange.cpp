#include "correction/ChatExchange.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

using namespace Qt::StringLiterals;

namespace orvane::ChatExchange {

namespace {

constexpr int maxTokens = 1536;

} // namespace

QByteArray body(const QList<Message> &messages, double temperature)
{
    QJsonArray list;
    for (const Message &message : messages)
        list.append(QJsonObject{{u"role"_s, message.role}, {u"content"_s, message.content}});
    const QJsonObject request{
        {u"messages"_s, list}, {u"temperature"_s, temperature}, {u"max_tokens"_s, maxTokens}};
    return QJsonDocument(request).toJson(QJsonDocument::Compact);
}

std::optional<QString> answer(const QByteArray &response)
{
    const QJsonValue choice = QJsonDocument::fromJson(response)[u"choices"_s][0];
    const QJsonValue content = choice[u"message"_s][u"content"_s];
    return content.isString() ? std::optional(content.toString()) : std::nullopt;
}

bool isContextOverflow(const QByteArray &response)
{
    const QJsonValue type = QJsonDocument::fromJson(response)[u"error"_s][u"type"_s];
    return type.toString().contains(u"exceed_context"_s);
}

} // namespace orvane::ChatExchange
