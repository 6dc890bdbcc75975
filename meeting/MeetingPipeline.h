#pragma once

#include "models/ModelFile.h"
#include "recognition/TranscriptionService.h"

#include <QCoroTask>

#include <stop_token>

namespace orvane {

/// From the finished audio of a meeting to its transcript. Main thread.
class MeetingPipeline
{
public:
    struct Request
    {
        QString audioPath;
        ModelFile model;
        QString language;
        TranscriptionService::SpeakerDetection speakers;
    };

    /// The engine must outlive this object and its tasks.
    MeetingPipeline(WhisperServerEngine &engine, TranscriptionService::SpeakerLabeller labelSpeakers);

    /// The segments with speech in them, repeats cut short, with speakers if asked. Throws what the engine
    /// throws, and Cancelled: the request is aborted then, so that the engine is free.
    [[nodiscard]] QCoro::Task<QList<DisplaySegment>> run(Request request, std::stop_token stop) const;

private:
    WhisperServerEngine &m_engine;
    const TranscriptionService::SpeakerLabeller m_labelSpeakers;
};

} // namespace orvane
