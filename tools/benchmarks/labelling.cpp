// Compares speaker labelling with the plain form of its features on one thread: an hour of speech in 900
// segments. Prints one line of JSON: milliseconds of the two, the best of the rounds.
//
// usage: bench-labelling WAV ROUNDS       (WAV: mono, 16 kHz, 16 bit)

#include "audio/SampleRate.h"
#include "recognition/labelling/SpeakerDiarizer.h"
#include "tests/recognition/PlainLabelling.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QtEndian>

#include <cstdio>
#include <limits>

using namespace orvane;

namespace {

constexpr size_t hour = size_t(3600) * sampleRate;
constexpr int segmentCount = 900;
constexpr qint64 segmentMs = 3'600'000 / segmentCount;

std::vector<float> hourOf(const QByteArray &wav)
{
    std::vector<float> samples;
    samples.reserve(hour);
    for (qsizetype at = 44; samples.size() < hour; at = at + 4 <= wav.size() ? at + 2 : 44)
        samples.push_back(float(qFromLittleEndian<qint16>(wav.constData() + at)) / 32'768);
    return samples;
}

std::vector<float> spanOf(const DisplaySegment &segment, const std::vector<float> &samples)
{
    return {samples.begin() + segment.start * sampleRate / 1000,
            samples.begin() + segment.end * sampleRate / 1000};
}

template <typename Labelling>
double milliseconds(Labelling label)
{
    QElapsedTimer timer;
    timer.start();
    label();
    return double(timer.nsecsElapsed()) / 1e6;
}

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    QFile file(arguments.value(1));
    if (arguments.size() != 3 || !file.open(QFile::ReadOnly)) {
        std::fputs("usage: bench-labelling WAV ROUNDS\n", stderr);
        return 2;
    }
    const std::vector<float> samples = hourOf(file.readAll());
    QList<DisplaySegment> segments(segmentCount);
    for (int i = 0; i < segmentCount; ++i) {
        segments[i].start = i * segmentMs;
        segments[i].end = (i + 1) * segmentMs;
    }

    double ours = std::numeric_limits<double>::max();
    double plain = ours;
    for (int round = 0; round < arguments[2].toInt(); ++round) {
        ours = std::min(ours, milliseconds([&] {
                            Q_UNUSED(SpeakerDiarizer::assignByVoice(segments, samples, sampleRate, 2));
                        }));
        plain = std::min(plain, milliseconds([&] {
                             for (const DisplaySegment &segment : segments)
                                 Q_UNUSED(PlainLabelling::features(spanOf(segment, samples), sampleRate));
                         }));
    }
    std::printf("{\"ours_ms\": %.1f, \"plain_ms\": %.1f}\n", ours, plain);
    return 0;
}
