#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QList>
#include <QMap>
#include <QString>

namespace orvane {

/// What the fake engine does with one request.
struct FakeAnswer
{
    enum class Ending {
        Whole,
        /// The connection is closed after half of the body.
        CutOff,
        /// The connection is closed without a byte.
        Closed,
        /// Bytes that are not HTTP.
        NotHttp,
        /// Nothing is ever sent.
        Never,
        /// The same, and the engine computes until it is ended, whoever waits.
        Computes,
        /// The process is killed.
        EngineDies,
    };

    int status = 200;
    QByteArray body{};
    /// From the request's last byte to the answer.
    int delayMs = 0;
    Ending ending = Ending::Whole;

    /// A request that is still waiting when the test ends it.
    [[nodiscard]] static FakeAnswer never() { return {.ending = Ending::Never}; }
    /// That text of a language model.
    [[nodiscard]] static FakeAnswer saying(const QString &text);
};

/// What a fake engine does from its start on. It reads this anew for every request.
struct FakeEngineBehaviour
{
    enum class Port { Opens, StaysShut };

    Port port = Port::Opens;
    int portDelayMs = 0;
    /// Ends by itself after that many milliseconds; negative never.
    int exitAfterMs = -1;
    bool ignoresSigterm = false;
    /// Bodies of requests are kept as files, see FakeEngineHome::Request.
    bool keepsBodies = true;
    /// By path, used up one per request; the last one stays. A path that is not here is answered with 404.
    QMap<QString, QList<FakeAnswer>> answers{};

    [[nodiscard]] QJsonObject toJson() const;
    [[nodiscard]] static FakeEngineBehaviour fromJson(const QJsonObject &json);
};

/// The names of the files in the engine's folder.
namespace FakeEngineFiles {
inline constexpr char16_t behaviour[] = u"behaviour.json";
inline constexpr char16_t log[] = u"log.jsonl";
} // namespace FakeEngineFiles

} // namespace orvane
