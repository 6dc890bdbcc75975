#include "recognition/labelling/SpeakerDiarizer.h"

#include "audio/AudioDecoder.h"
#include "audio/AudioDecoderError.h"
#include "audio/SampleRate.h"
#include "base/AllCores.h"
#include "base/Async.h"
#include "recognition/labelling/VoiceClusters.h"

#include <QHash>

#include <algorithm>
#include <atomic>
#include <limits>

namespace orvane::SpeakerDiarizer {

namespace {

/// A shorter piece tells nothing of its voice.
constexpr qint64 minSamples = 4'000;
// A thread costs as much as the features of some segments.
constexpr size_t segmentsPerThread = 8;

/// Whole samples up to a time; times that no recording reaches count as the last that could be computed.
qint64 samplesUntil(qint64 milliseconds, int rate)
{
    const qint64 reachable = std::numeric_limits<qint64>::max() / rate;
    return std::clamp<qint64>(milliseconds, 0, reachable) * rate / 1000;
}

std::optional<Features> featuresOf(const DisplaySegment &segment, std::span<const float> samples, int rate)
{
    const qint64 first = samplesUntil(segment.start, rate);
    const qint64 end = std::min(samplesUntil(segment.end, rate), static_cast<qint64>(samples.size()));
    if (end - first < minSamples)
        return std::nullopt;
    return voiceFeatures(samples.subspan(static_cast<size_t>(first), static_cast<size_t>(end - first)), rate);
}

std::vector<std::optional<Features>> featuresOfEach(const QList<DisplaySegment> &segments,
                                                    std::span<const float> samples, int rate)
{
    const auto count = static_cast<size_t>(segments.size());
    std::vector<std::optional<Features>> features(count);
    std::atomic<size_t> next = 0;
    runOnAllCores(count, segmentsPerThread, [&] {
        for (size_t i = next++; i < count; i = next++)
            features[i] = featuresOf(segments[static_cast<qsizetype>(i)], samples, rate);
    });
    return features;
}

} // namespace

QCoro::Task<QList<DisplaySegment>> assignByVoice(QList<DisplaySegment> segments, QString audioPath,
                                                 int maxSpeakers, const AudioDecoder *decoder,
                                                 std::stop_token stop)
{
    auto label = [segments, audioPath, maxSpeakers, decoder, stop] {
        try {
            const std::vector<float> samples = decoder->decode(audioPath, stop).samples;
            return assignByVoice(segments, samples, sampleRate, maxSpeakers);
        } catch (const AudioDecoderError &) {
            return assignSingle(segments); // the transcript is worth more than the numbers
        }
    };
    co_return co_await offMainThread(&longWorkPool(), std::move(label));
}

QList<DisplaySegment> assignByVoice(QList<DisplaySegment> segments, std::span<const float> samples, int rate,
                                    int maxSpeakers)
{
    if (segments.size() < 2 || maxSpeakers < 2 || samples.empty())
        return assignSingle(std::move(segments));
    const auto features = featuresOfEach(segments, samples, rate);
    std::vector<Features> known;
    for (const std::optional<Features> &one : features) {
        if (one)
            known.push_back(*one);
    }
    if (known.size() < 2)
        return assignSingle(std::move(segments));

    const int most = static_cast<int>(std::min(known.size(), static_cast<size_t>(maxSpeakers)));
    const std::vector<int> labels = cluster(std::move(known), most);
    QHash<int, qint64> numbers;
    qint64 speaker = 1;
    auto label = labels.begin();
    for (qsizetype i = 0; i < segments.size(); ++i) {
        // A segment that tells nothing of its voice goes on with the one before.
        if (features[static_cast<size_t>(i)]) {
            if (!numbers.contains(*label))
                numbers.insert(*label, numbers.size() + 1);
            speaker = numbers.value(*label++);
        }
        segments[i].speaker = speaker;
    }
    return segments;
}

QList<DisplaySegment> assignSingle(QList<DisplaySegment> segments)
{
    for (DisplaySegment &segment : segments)
        segment.speaker = 1;
    return segments;
}

} // namespace orvane::SpeakerDiarizer
