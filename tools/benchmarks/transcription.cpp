// Compares a transcription through the service, engine warm, with the same upload sent by curl to the
// same server. Prints one line of JSON: milliseconds of the service and of curl, the best of the rounds.
//
// usage: bench-transcription WAV MODEL RESOURCES ROUNDS

#include "audio/AudioDecoder.h"
#include "engine/EngineProcessRegistry.h"
#include "recognition/TranscriptionService.h"
#include "recognition/WhisperServerEngine.h"
#include "tools/benchmarks/Measurement.h"

#include <QDir>
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

/// The engine, with the address of its server shown to the peer.
class ObservableEngine : public WhisperServerEngine
{
public:
    using WhisperServerEngine::WhisperServerEngine;
    [[nodiscard]] QString address() const { return requestTo(u"/inference"_s).url().toString(); }
};

QCoro::Task<qint64> millisecondsOfCurl(QString address, QString wav)
{
    QProcess curl;
    QElapsedTimer timer;
    timer.start();
    curl.start(u"curl"_s, {u"--silent"_s, u"--fail"_s, u"--output"_s, u"/dev/null"_s, u"-F"_s,
                           u"file=@"_s + wav, u"-F"_s, u"response_format=verbose_json"_s, u"-F"_s,
                           u"language=en"_s, u"-F"_s, u"temperature=0.0"_s, u"-F"_s,
                           u"no_language_probabilities=true"_s, u"-F"_s, u"split_on_word=true"_s, address});
    co_await qCoro(curl).waitForFinished(-1ms);
    if (curl.exitStatus() != QProcess::NormalExit || curl.exitCode() != 0)
        throw Error(u"curl failed: "_s + curl.errorString());
    co_return timer.elapsed();
}

QCoro::Task<qint64> millisecondsOfService(TranscriptionService *service,
                                          TranscriptionService::Request request)
{
    QElapsedTimer timer;
    timer.start();
    co_await service->transcribe(request);
    co_return timer.elapsed();
}

QCoro::Task<> measure(QStringList arguments)
{
    const AudioDecoder decoder(arguments[3]);
    EngineProcessRegistry registry{QString()};
    ObservableEngine engine({.resources = arguments[3]}, registry, QDir::tempPath());
    const EngineTurns turns;
    TranscriptPipeline pipeline(engine, decoder);
    TranscriptionService service({.engine = engine, .pipeline = pipeline, .turns = turns, .saveRecord = {}});

    TranscriptionService::Request request;
    request.audioPath = arguments[1];
    request.model = ModelFile::atPath(arguments[2]);
    request.language = u"en"_s;
    request.history = TranscriptionService::History::Skip;
    co_await millisecondsOfService(&service, request); // warms up

    qint64 ofService = std::numeric_limits<qint64>::max();
    qint64 ofCurl = std::numeric_limits<qint64>::max();
    for (int round = 0; round < arguments[4].toInt(); ++round) {
        ofCurl = std::min(ofCurl, co_await millisecondsOfCurl(engine.address(), request.audioPath));
        ofService = std::min(ofService, co_await millisecondsOfService(&service, request));
    }
    std::printf("{\"service_ms\": %lld, \"curl_ms\": %lld}\n", ofService, ofCurl);
    co_await engine.stopAndWait();
}

} // namespace

int main(int argc, char *argv[])
{
    return Measurement::execute(argc, argv, "bench-transcription WAV MODEL RESOURCES ROUNDS", measure);
}
