#pragma once

#include "audio/AudioDecoder.h"
#include "audio/AudioDecoderError.h"
#include "audio/SampleRate.h"
#include "tests/support/Files.h"
#include "tests/support/Tone.h"

#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <algorithm>
#include <cmath>
#include <span>
#include <vector>

namespace orvane::test {

using namespace Qt::StringLiterals;

inline constexpr double pitch = 440;
inline constexpr double level = 0.5;

// ffmpeg's arguments for a source of two seconds in which every channel sounds at 440 Hz.
inline QStringList tone(int sourceRate, const QString &layout, int channels, double seconds = 2,
                        double frequency = pitch)
{
    const QString wave = u"%1*sin(2*PI*%2*t)"_s.arg(level).arg(frequency);
    const QString source = u"aevalsrc=%1:s=%2:d=%3:c=%4"_s.arg(QStringList(channels, wave).join(u'|'))
                               .arg(sourceRate)
                               .arg(seconds)
                               .arg(layout);
    return {u"-f"_s, u"lavfi"_s, u"-i"_s, source};
}

inline QStringList stereo(int sourceRate = 44100, double seconds = 2)
{
    return tone(sourceRate, u"stereo"_s, 2, seconds);
}

inline const QStringList picture = {u"-f"_s, u"lavfi"_s, u"-i"_s, u"testsrc=s=64x48:r=10:d=2"_s};

// Whether the tone is in there at its level.
inline bool hasTone(std::span<const float> samples)
{
    return std::abs(amplitudeAt(pitch, samples) - level) < 0.04;
}

// Empty when the samples are the tone and nothing else, for about that long.
inline QString faultOf(const std::vector<float> &samples, double seconds = 2)
{
    const auto count = double(samples.size());
    if (std::abs(count - seconds * sampleRate) > 0.06 * sampleRate) // what encoders add or cut at the ends
        return u"%1 samples for %2 s"_s.arg(count).arg(seconds);
    if (!std::ranges::all_of(samples, [](float sample) { return sample >= -1 && sample <= 1; }))
        return u"samples outside of −1…1"_s;
    const auto middle = std::span(samples).subspan(samples.size() / 4, samples.size() / 2);
    const double found = amplitudeAt(pitch, middle);
    const double all = wholeAmplitude(middle);
    if (std::abs(found - level) > 0.06 * level || std::abs(all - found) > 0.02 * level)
        return u"amplitude %1, whole %2 instead of %3"_s.arg(found).arg(all).arg(level);
    return {};
}

/// Makes media files with the ffmpeg program, and has them decoded.
class MediaMaker
{
public:
    [[nodiscard]] QString at(const QString &name) const { return m_folder.filePath(name); }

    // Makes a file with the ffmpeg program; its path.
    QString make(const QString &name, const QStringList &arguments) const
    {
        QProcess ffmpeg;
        ffmpeg.start(u"ffmpeg"_s, QStringList{u"-nostdin"_s, u"-v"_s, u"error"_s, u"-y"_s} + arguments +
                                      QStringList{at(name)});
        if (!ffmpeg.waitForFinished(60000) || ffmpeg.exitCode() != 0)
            qFatal("ffmpeg did not make %s: %s %s", qUtf8Printable(name),
                   qUtf8Printable(ffmpeg.errorString()), ffmpeg.readAllStandardError().constData());
        return at(name);
    }

    // Writes that into a file; its path.
    QString put(const QString &name, const QByteArray &content) const
    {
        test::put(at(name), content);
        return at(name);
    }

    // The error's description; "decoded" when there is none.
    QString failure(const QString &path) const
    {
        try {
            return u"decoded %1"_s.arg(m_decoder.decode(path).samples.size());
        } catch (const AudioDecoderError &error) {
            return error.description();
        }
    }

    // Empty when the file decodes to the tone.
    QString faultOfFile(const QString &path) const
    {
        try {
            const AudioDecoder::Sound sound = m_decoder.decode(path);
            return sound.damagedFrom ? u"damaged"_s : faultOf(sound.samples);
        } catch (const Error &error) {
            return error.description();
        }
    }

    [[nodiscard]] QString folder() const { return m_folder.path(); }
    [[nodiscard]] const AudioDecoder &decoder() const { return m_decoder; }

private:
    const QTemporaryDir m_folder;
    const AudioDecoder m_decoder{QStringLiteral(ORVANE_RESOURCES)};
};

} // namespace orvane::test
