#include "recognition/TranscriptPipeline.h"

#include "audio/AudioDecoder.h"
#include "audio/AudioDecoderError.h"
#include "audio/SampleRate.h"
#include "audio/WavFileWriter.h"
#include "base/Async.h"
#include "base/localization/Localization.h"
#include "recognition/EstimatedProgress.h"
#include "recognition/WhisperServerEngine.h"
#include "recognition/labelling/SpeakerDiarizer.h"
#include "transcript/TranscriptSanitizer.h"

#include <QFileInfo>
#include <QStringList>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orvane {

namespace {

constexpr int maxSpeakers = 2;
/// A longer one at the end of a transcript may be a part of the file that could not be read.
constexpr auto usualSilence = 10s;

using Length = std::optional<std::chrono::milliseconds>;

/// Formats that the recognition server reads itself.
bool isDirectFormat(const QString &path)
{
    static const QStringList formats = {u"wav"_s, u"mp3"_s, u"flac"_s, u"ogg"_s};
    return formats.contains(QFileInfo(path).suffix(), Qt::CaseInsensitive);
}

/// The recording was stopped before the microphone gave a sample; the engine rejects such a file.
bool isEmptyRecording(const QString &path)
{
    const QFileInfo audio(path);
    return audio.exists() && audio.size() <= WavFileWriter::headerBytes;
}

/// "[BLANK_AUDIO]", "(music)", "*coughs*", or nothing.
bool isWithoutSpeech(const DisplaySegment &segment)
{
    const QString text = segment.text.trimmed();
    const auto stands = [&text](char16_t first, char16_t last) {
        return text.startsWith(QChar(first)) && text.endsWith(QChar(last));
    };
    return text.isEmpty() || stands(u'[', u']') || stands(u'(', u')') || stands(u'*', u'*');
}

QString recognitionStatus()
{
    return Localization::text(u"Распознавание речи… (первый запуск движка — несколько секунд)");
}

/// The server fills what it could not read with silence, up to the length that the file tells.
bool endsEarly(const Transcript &transcript)
{
    const auto spoken =
        std::find_if_not(transcript.segments.rbegin(), transcript.segments.rend(), isWithoutSpeech);
    const qint64 heard = spoken == transcript.segments.rend() ? 0 : spoken->end;
    return transcript.length && 1ms * heard + usualSilence < *transcript.length;
}

Length damageOf(const AudioDecoder &decoder, const QString &path, const std::stop_token &stop)
{
    try {
        return decoder.decode(path, stop).damagedFrom;
    } catch (const AudioDecoderError &) {
        return std::nullopt; // what was recognised is worth more than to know
    }
}

QCoro::Task<Length> lengthOf(const AudioDecoder *decoder, QString path,
                             std::weak_ptr<EstimatedProgress> shown, std::stop_token stop)
{
    const Length length =
        co_await offMainThread([decoder, path, stop] { return decoder->duration(path, stop); });
    if (const std::shared_ptr<EstimatedProgress> progress = shown.lock(); progress && length)
        progress->setLength(*length);
    co_return length;
}

} // namespace

QString Transcript::damageText() const
{
    if (!damagedFrom)
        return {};
    return Localization::text(u"файл повреждён с %1, дальше ничего не распознано")
        .arg(timecodeOf(damagedFrom->count()));
}

TranscriptPipeline::TranscriptPipeline(WhisperServerEngine &engine, const AudioDecoder &decoder)
    : m_engine(engine),
      m_decoder(decoder)
{}

QCoro::Task<Transcript> TranscriptPipeline::run(Request request, Progress progress, std::stop_token stop)
{
    const bool isMeeting = request.medium == Medium::Meeting;
    const auto isNothingThere = [decoder = &m_decoder, path = request.audioPath, isMeeting] {
        if (isMeeting && isEmptyRecording(path))
            return true;
        decoder->requireReadable(path);
        return false;
    };
    if (co_await m_scope(offMainThread(isNothingThere), stop))
        co_return Transcript();

    Transcript transcript = co_await m_scope(recognise(request, progress, stop), stop);
    if (isMeeting)
        transcript.segments.removeIf(isWithoutSpeech);
    transcript.segments =
        TranscriptSanitizer::collapseRepeats(transcript.segments, TranscriptSanitizer::keptRepeats);
    if (request.speakers == SpeakerDetection::On)
        transcript = co_await m_scope(label(std::move(transcript), request.audioPath, stop), stop);
    co_return transcript;
}

QCoro::Task<Transcript> TranscriptPipeline::label(Transcript transcript, QString audioPath,
                                                  std::stop_token stop)
{
    if (!transcript.segments.isEmpty()) {
        transcript.segments = co_await m_scope(
            SpeakerDiarizer::assignByVoice(transcript.segments, audioPath, maxSpeakers, &m_decoder, stop),
            stop);
    }
    co_return transcript;
}

QCoro::Task<Transcript> TranscriptPipeline::recognise(Request request, Progress progress,
                                                      std::stop_token stop)
{
    if (isDirectFormat(request.audioPath)) {
        try {
            co_return co_await m_scope(recogniseDirectly(request, progress, stop), stop);
        } catch (const EngineServer::EngineError &error) {
            if (error.kind() != EngineServer::EngineError::Kind::requestRejected)
                throw;
        }
        // A voice message is Opus in .ogg: the server does not read it, we do.
    }
    co_return co_await m_scope(recogniseDecoded(request, progress, stop), stop);
}

QCoro::Task<Transcript> TranscriptPipeline::recogniseDirectly(Request request, Progress progress,
                                                              std::stop_token stop)
{
    progress.setStatus(recognitionStatus());
    const auto shown = std::make_shared<EstimatedProgress>(progress, m_estimate, request.model.path);
    QCoro::Task<Length> length = lengthOf(&m_decoder, request.audioPath, shown, stop); // meanwhile
    co_await m_scope(m_engine.load(request.model.path, stop), stop);
    shown->begin();
    const RecognisedSpeech speech = co_await m_scope(
        m_engine.infer(request.audioPath, request.language, WhisperServerEngine::NonSpeech::Keep, stop),
        stop);
    shown->end();
    Transcript transcript{.segments = DisplaySegment::from(speech.segments),
                          .length = co_await m_scope(std::move(length), stop)};
    co_return co_await m_scope(checked(std::move(transcript), request.audioPath, stop), stop);
}

// The server does not tell how much of the file it could read.
QCoro::Task<Transcript> TranscriptPipeline::checked(Transcript transcript, QString audioPath,
                                                    std::stop_token stop)
{
    if (endsEarly(transcript)) {
        auto look = [decoder = &m_decoder, audioPath, stop] { return damageOf(*decoder, audioPath, stop); };
        transcript.damagedFrom = co_await m_scope(offMainThread(&longWorkPool(), std::move(look)), stop);
    }
    if (const Length damagedFrom = transcript.damagedFrom) {
        transcript.segments.removeIf([damagedFrom](const DisplaySegment &segment) {
            return 1ms * segment.start >= *damagedFrom && isWithoutSpeech(segment);
        });
    }
    co_return transcript;
}

QCoro::Task<Transcript> TranscriptPipeline::recogniseDecoded(Request request, Progress progress,
                                                             std::stop_token stop)
{
    progress.setStatus(Localization::text(u"Декодирование аудио…"));
    progress.report(0);
    auto decode = [decoder = &m_decoder, path = request.audioPath, stop] {
        return decoder->decode(path, stop);
    };
    AudioDecoder::Sound sound = co_await m_scope(offMainThread(&longWorkPool(), std::move(decode)), stop);

    const auto length = 1ms * (qint64(sound.samples.size()) * 1000 / sampleRate);
    progress.setStatus(recognitionStatus());
    co_await m_scope(m_engine.load(request.model.path, stop), stop);
    EstimatedProgress shown(progress, m_estimate, request.model.path);
    shown.setLength(length);
    shown.begin();
    const RecognisedSpeech speech =
        co_await m_scope(m_engine.transcribe(std::move(sound.samples), request.model.path, request.language,
                                             WhisperServerEngine::NonSpeech::Keep, stop),
                         stop);
    shown.end();
    co_return Transcript{.segments = DisplaySegment::from(speech.segments),
                         .length = length,
                         .damagedFrom = sound.damagedFrom};
}

} // namespace orvane
