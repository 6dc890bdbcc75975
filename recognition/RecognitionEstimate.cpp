#include "recognition/RecognitionEstimate.h"

#include <QFileInfo>
#include <QThread>

#include <algorithm>

namespace orvane {

namespace {

using Duration = RecognitionEstimate::Duration;
using Seconds = std::chrono::duration<double>;

// Measured with the base model (148 MB) on 4 cores: 110 s of speech in 5.3 s.
constexpr double secondsPerSecondByteCore = 5.3 / 110 / 148e6 * 4;

// The models compute in windows of 30 s, so that a shorter recording takes as long as one.
constexpr Duration window = std::chrono::seconds(30);

Seconds firstGuess(const QString &modelPath, Duration audio)
{
    const double rate =
        secondsPerSecondByteCore * double(QFileInfo(modelPath).size()) / QThread::idealThreadCount();
    return Seconds(std::max(audio, window)) * rate;
}

} // namespace

Duration RecognitionEstimate::expected(const QString &modelPath, Duration audio) const
{
    return std::chrono::duration_cast<Duration>(firstGuess(modelPath, audio) * m_correction);
}

void RecognitionEstimate::learn(const QString &modelPath, Duration audio, Duration taken)
{
    const Seconds guess = firstGuess(modelPath, audio);
    if (guess > Seconds::zero())
        m_correction = Seconds(taken) / guess;
}

} // namespace orvane
