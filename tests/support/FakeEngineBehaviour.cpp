#include "tests/support/FakeEngineBehaviour.h"

#include <QJsonArray>
#include <QJsonDocument>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

QJsonObject toJson(const FakeAnswer &answer)
{
    return {{u"status"_s, answer.status},
            {u"body"_s, QString::fromLatin1(answer.body.toBase64())},
            {u"delayMs"_s, answer.delayMs},
            {u"ending"_s, int(answer.ending)}};
}

FakeAnswer answerFrom(const QJsonObject &json)
{
    return {.status = json[u"status"_s].toInt(),
            .body = QByteArray::fromBase64(json[u"body"_s].toString().toLatin1()),
            .delayMs = json[u"delayMs"_s].toInt(),
            .ending = FakeAnswer::Ending(json[u"ending"_s].toInt())};
}

} // namespace

FakeAnswer FakeAnswer::saying(const QString &text)
{
    const QJsonObject choice{{u"message"_s, QJsonObject{{u"content"_s, text}}}};
    return {.body = QJsonDocument(QJsonObject{{u"choices"_s, QJsonArray{choice}}}).toJson()};
}

QJsonObject FakeEngineBehaviour::toJson() const
{
    QJsonObject paths;
    for (auto path = answers.begin(); path != answers.end(); ++path) {
        QJsonArray list;
        for (const FakeAnswer &answer : path.value())
            list.append(orvane::toJson(answer));
        paths[path.key()] = list;
    }
    return {{u"port"_s, int(port)},          {u"portDelayMs"_s, portDelayMs},
            {u"exitAfterMs"_s, exitAfterMs}, {u"ignoresSigterm"_s, ignoresSigterm},
            {u"keepsBodies"_s, keepsBodies}, {u"answers"_s, paths}};
}

FakeEngineBehaviour FakeEngineBehaviour::fromJson(const QJsonObject &json)
{
    FakeEngineBehaviour behaviour{.port = Port(json[u"port"_s].toInt()),
                                  .portDelayMs = json[u"portDelayMs"_s].toInt(),
                                  .exitAfterMs = json[u"exitAfterMs"_s].toInt(),
                                  .ignoresSigterm = json[u"ignoresSigterm"_s].toBool(),
                                  .keepsBodies = json[u"keepsBodies"_s].toBool(),
                                  .answers = {}};
    const QJsonObject paths = json[u"answers"_s].toObject();
    for (auto path = paths.begin(); path != paths.end(); ++path) {
        for (const QJsonValue answer : path.value().toArray())
            behaviour.answers[path.key()].append(answerFrom(answer.toObject()));
    }
    return behaviour;
}

} // namespace orvane
