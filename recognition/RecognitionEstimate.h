#pragma once

#include <QString>

#include <chrono>

namespace orvane {

/// Guesses how long a recognition will take, since the engine does not tell how far it is. Begins
/// with a guess from the model's size and the processor's cores, and learns from every run.
class RecognitionEstimate
{
public:
    using Duration = std::chrono::milliseconds;

    /// Time from now to the result, for audio of that length on that model.
    [[nodiscard]] Duration expected(const QString &modelPath, Duration audio) const;

    /// A recognition with a warm engine took this long.
    void learn(const QString &modelPath, Duration audio, Duration taken);

private:
    /// Measured speed relative to the first guess; above 1 the machine is slower than guessed.
    double m_correction = 1.0;
};

} // namespace orvane
