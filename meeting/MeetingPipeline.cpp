#include "meeting/MeetingPipeline.h"

#include "audio/WavFileWriter.h"
#include "base/Async.h"
#include "transcript/TranscriptSanitizer.h"

#include <QFileInfo>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

constexpr int mostSpeakers = 2;

/// "[BLANK_AUDIO]", "(music)", "*coughs*", or nothing.
bool isWithoutSpeech(const DisplaySegment &segment)
{
    const QString text = segment.text.trimmed();
    const auto stands = [&text](char16_t first, char16_t last) {
        return text.startsWith(QChar(first)) && text.endsWith(QChar(last));
    };
    return text.isEmpty() || stands(u'[', u']') || stands(u'(', u')') || stands(u'*', u'*');
}

/// The recording was stopped before the microphone gave a sample; the engine rejects such a file.
bool isEmpty(const QString &audioPath)
{
    const QFileInfo audio(audioPath);
    return audio.exists() && audio.size() <= WavFileWriter::headerBytes;
}

} // namespace

MeetingPipeline::MeetingPipeline(WhisperServerEngine &engine,
                                 TranscriptionService::SpeakerLabeller labelSpeakers)
    : m_engine(engine),
      m_labelSpeakers(std::move(labelSpeakers))
{}

QCoro::Task<QList<DisplaySegment>> MeetingPipeline::run(Request request, std::stop_token stop) const
{
    const auto label =
        request.speakers == TranscriptionService::SpeakerDetection::On ? m_labelSpeakers : nullptr;
    WhisperServerEngine &engine = m_engine;
    const bool isNothingThere = co_await offMainThread([path = request.audioPath] { return isEmpty(path); });
    throwIfCancelled(stop);
    if (isNothingThere)
        co_return {};
    co_await engine.load(request.model.path, stop);
    throwIfCancelled(stop);
    const QList<RawSegment> raw = co_await engine.infer(request.audioPath, request.language,
                                                        WhisperServerEngine::NonSpeech::Keep, stop);
    throwIfCancelled(stop);
    QList<DisplaySegment> segments = DisplaySegment::from(raw);
    segments.removeIf(isWithoutSpeech);
    segments = TranscriptSanitizer::collapseRepeats(segments, TranscriptSanitizer::keptRepeats);
    if (label && !segments.isEmpty()) {
        segments = co_await label(request.audioPath, segments, mostSpeakers, stop);
        throwIfCancelled(stop);
    }
    co_return segments;
}

} // namespace orvane
