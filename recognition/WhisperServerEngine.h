#pragma once

#include "engine/EngineServer.h"
#include "recognition/MultipartBody.h"
#include "recognition/RecognisedSpeech.h"

#include <vector>

namespace orvane {

/// Turns audio into timed text with whisper.cpp's `whisper-server`. One for the whole program, shared
/// by everything that recognises speech. See EngineServer for loading, stopping and errors.
class WhisperServerEngine : public EngineServer
{
    Q_OBJECT

public:
    enum class NonSpeech {
        Keep,
        /// Silence and noise give no segment instead of "[BLANK_AUDIO]" and the like.
        Suppress,
    };

    /// `temporaryFolder` takes the samples of running requests.
    WhisperServerEngine(const SearchPath &search, EngineProcessRegistry &registry,
                        const QString &temporaryFolder);

    /// Recognises mono 16 kHz samples in −1…1 with the model, which is loaded if need be. `language` is a
    /// code, what an earlier answer found, or "auto". Times count from the first sample. A requested stop
    /// aborts the request.
    QCoro::Task<RecognisedSpeech> transcribe(std::vector<float> samples, QString modelPath, QString language,
                                             NonSpeech nonSpeech = NonSpeech::Keep,
                                             std::stop_token stop = {});

    /// The same for an audio file that the server reads itself (WAV, MP3, FLAC, Ogg Vorbis), on the model
    /// that load() has just loaded. Throws EngineError with kind requestRejected when the server
    /// cannot read it.
    QCoro::Task<RecognisedSpeech> infer(QString audioPath, QString language,
                                        NonSpeech nonSpeech = NonSpeech::Keep, std::stop_token stop = {});

protected:
    [[nodiscard]] QStringList arguments(const QString &executable, const QString &modelPath) const override;
    [[nodiscard]] QNetworkRequest probeRequest() const override;
    [[nodiscard]] bool isReady(int status) const override;

private:
    QCoro::Task<HttpAnswer> post(QString audioPath, MultipartBody::Fields fields, std::stop_token stop);

    const QString m_temporaryFolder;
};

} // namespace orvane
