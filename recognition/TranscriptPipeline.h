#pragma once

#include "base/Operation.h"
#include "base/Scope.h"
#include "models/ModelFile.h"
#include "recognition/RecognitionEstimate.h"
#include "transcript/DisplaySegment.h"

#include <QCoroTask>

#include <chrono>
#include <memory>
#include <optional>
#include <stop_token>

namespace orvane {

class AudioDecoder;
class WhisperServerEngine;

/// What is said in an audio or video file.
struct Transcript
{
    QList<DisplaySegment> segments;
    /// Of the file's sound; none when unknown.
    std::optional<std::chrono::milliseconds> length = std::nullopt;
    /// From there on the file is damaged and nothing was heard; none when all of it could be read.
    std::optional<std::chrono::milliseconds> damagedFrom = std::nullopt;

    /// The same in words for the user; empty when all of it could be read.
    [[nodiscard]] QString damageText() const;
};

/// From a file to its transcript, for everything that is transcribed as a whole: files, meetings, recordings
/// of the history. Loads the engine, decodes what the engine cannot read itself, has it recognised, cuts
/// repeats short and numbers the speakers if asked. Main thread.
class TranscriptPipeline
{
public:
    enum class SpeakerDetection { Off, On };
    enum class Medium {
        File,
        /// The WAV file of a meeting: it may be empty, and what is marked as no speech is left out.
        Meeting,
    };

    struct Request
    {
        QString audioPath;
        ModelFile model;
        /// A language code or "auto".
        QString language;
        SpeakerDetection speakers = SpeakerDetection::Off;
        Medium medium = Medium::File;
    };

    /// They outlive this object, the decoder also the pools' work.
    TranscriptPipeline(WhisperServerEngine &engine, const AudioDecoder &decoder);

    /// Throws what the engine and the decoder throw, and Cancelled: the engine's request is aborted then, so
    /// that it is free for the next.
    [[nodiscard]] QCoro::Task<Transcript> run(Request request, Progress progress, std::stop_token stop);

    /// Numbers the speakers of a transcript of that file, for who decides about it after the recognition.
    [[nodiscard]] QCoro::Task<Transcript> label(Transcript transcript, QString audioPath,
                                                std::stop_token stop);

private:
    [[nodiscard]] QCoro::Task<Transcript> recognise(Request request, Progress progress, std::stop_token stop);
    [[nodiscard]] QCoro::Task<Transcript> recogniseDirectly(Request request, Progress progress,
                                                            std::stop_token stop);
    [[nodiscard]] QCoro::Task<Transcript> checked(Transcript transcript, QString audioPath,
                                                  std::stop_token stop);
    [[nodiscard]] QCoro::Task<Transcript> recogniseDecoded(Request request, Progress progress,
                                                           std::stop_token stop);

    WhisperServerEngine &m_engine;
    const AudioDecoder &m_decoder;
    const std::shared_ptr<RecognitionEstimate> m_estimate = std::make_shared<RecognitionEstimate>();
    Scope m_scope;
};

} // namespace orvane
