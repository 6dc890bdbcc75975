#include "recognition/WhisperResponse.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <cmath>

using namespace Qt::StringLiterals;

namespace orvane::WhisperResponse {

namespace {

qint64 milliseconds(const QJsonValue &seconds)
{
    constexpr double limit = 9.2e18; // beyond it the number does not fit 64 bits
    const double value = seconds.toDouble() * 1000.0;
    return std::isfinite(value) && std::abs(value) < limit ? qint64(value) : 0;
}

} // namespace

std::optional<RecognisedSpeech> speech(const QByteArray &json)
{
    const QJsonDocument document = QJsonDocument::fromJson(json);
    const QJsonValue list = document.object().value(u"segments"_s);
    if (!list.isArray())
        return std::nullopt;

    RecognisedSpeech speech{.segments = {}, .language = document.object()[u"language"_s].toString()};
    for (const QJsonValue entry : list.toArray()) {
        if (!entry.isObject())
            return std::nullopt;
        speech.segments.append({.start = milliseconds(entry[u"start"_s]),
                                .end = milliseconds(entry[u"end"_s]),
                                .text = entry[u"text"_s].toString()});
    }
    return speech;
}

bool isRejection(const QByteArray &json)
{
    return QJsonDocument::fromJson(json).object().contains(u"error"_s);
}

} // namespace orvane::WhisperResponse
