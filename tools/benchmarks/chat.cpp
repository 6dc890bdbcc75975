// Compares a chat exchange through the engine, model loaded, with the same request sent by curl to the same
// server. Prints one line of JSON: milliseconds of the engine and of curl, the best of the rounds.
//
// usage: bench-chat MODEL RESOURCES ROUNDS

#include "correction/ChatExchange.h"
#include "correction/LocalLLMEngine.h"
#include "engine/EngineProcessRegistry.h"
#include "tools/benchmarks/Measurement.h"

#include <QElapsedTimer>
#include <QProcess>

#include <QCoroProcess>

#include <algorithm>
#include <cstdio>
#include <limits>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace orvane;

namespace {

/// The engine, with its server's address and key shown to the peer.
class ObservableEngine : public LocalLLMEngine
{
public:
    using LocalLLMEngine::LocalLLMEngine;
    [[nodiscard]] QString address() const { return requestTo(u"/v1/chat/completions"_s).url().toString(); }
    [[nodiscard]] QString secret() const { return key(); }
};

/// The model always takes the likeliest word here, so that both peers wait for the same answer.
constexpr double temperature = 0;

QList<LocalLLMEngine::Message> messages()
{
    return {{.role = u"system"_s, .content = u"Answer in one sentence."_s},
            {.role = u"user"_s, .content = u"What is the capital of France?"_s}};
}

QCoro::Task<double> millisecondsOfCurl(ObservableEngine *engine)
{
    QProcess curl;
    QElapsedTimer timer;
    timer.start();
    curl.start(u"curl"_s,
               {u"--silent"_s, u"--fail"_s, u"--output"_s, u"/dev/null"_s, u"--header"_s,
                u"Content-Type: application/json"_s, u"--header"_s,
                u"Authorization: Bearer "_s + engine->secret(), u"--data-binary"_s,
                QString::fromUtf8(ChatExchange::body(messages(), temperature)), engine->address()});
    co_await qCoro(curl).waitForFinished(-1ms);
    if (curl.exitStatus() != QProcess::NormalExit || curl.exitCode() != 0)
        throw Error(u"curl failed: "_s + curl.errorString());
    co_return double(timer.nsecsElapsed()) / 1e6;
}

QCoro::Task<double> millisecondsOfEngine(ObservableEngine *engine)
{
    QElapsedTimer timer;
    timer.start();
    co_await engine->chat(messages(), temperature);
    co_return double(timer.nsecsElapsed()) / 1e6;
}

QCoro::Task<> measure(QStringList arguments)
{
    EngineProcessRegistry registry{QString()};
    ObservableEngine engine({.resources = arguments[2]}, registry);
    co_await engine.load(arguments[1]);
    co_await millisecondsOfEngine(&engine); // the server keeps what it has computed of the prompt

    double ofEngine = std::numeric_limits<double>::max();
    double ofCurl = std::numeric_limits<double>::max();
    for (int round = 0; round < arguments[3].toInt(); ++round) {
        ofCurl = std::min(ofCurl, co_await millisecondsOfCurl(&engine));
        ofEngine = std::min(ofEngine, co_await millisecondsOfEngine(&engine));
    }
    std::printf("{\"engine_ms\": %.2f, \"curl_ms\": %.2f}\n", ofEngine, ofCurl);
    co_await engine.stopAndWait();
}

} // namespace

int main(int argc, char *argv[])
{
    return Measurement::execute(argc, argv, "bench-chat MODEL RESOURCES ROUNDS", measure);
}
