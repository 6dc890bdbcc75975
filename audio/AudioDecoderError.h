#pragma once

#include "base/Error.h"

namespace orvane {

/// A media file cannot be turned into samples.
class AudioDecoderError : public Error
{
public:
    enum class Kind { couldNotOpen, conversionFailed, noAudioTrack, noSamples };

    /// The first two with their reason, a text in the interface language.
    [[nodiscard]] static AudioDecoderError couldNotOpen(const QString &reason);
    [[nodiscard]] static AudioDecoderError conversionFailed(const QString &reason);
    [[nodiscard]] static AudioDecoderError noAudioTrack();
    [[nodiscard]] static AudioDecoderError noSamples();

    [[nodiscard]] Kind kind() const { return m_kind; }

private:
    AudioDecoderError(Kind kind, const QString &description) : Error(description), m_kind(kind) {}

    Kind m_kind;
};

} // namespace orvane
