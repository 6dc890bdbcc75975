#pragma once

#include "base/Scope.h"
#include "dictation/DictatedText.h"
#include "dictation/PauseDetector.h"
#include "dictation/SnapshotRhythm.h"

#include <QObject>
#include <QString>

#include <QCoroTask>

#include <functional>
#include <memory>
#include <stop_token>
#include <vector>

namespace orvane {

class Battery;
class EngineTurns;
class OneTimeEvent;
class WhisperServerEngine;

/// The recognition of one dictation, which begins while it is still being spoken: whenever speech pauses,
/// what is not settled yet may be sent to the engine. When the recording ends, at most the rest of it has to
/// be recognised, and nothing if it ended in quiet. Main thread.
class EarlyRecognition : public QObject
{
    Q_OBJECT

public:
    struct Collaborators
    {
        WhisperServerEngine &engine;
        const EngineTurns &turns;
        const Battery &battery;
        /// The file of the model to recognise with; empty when there is none.
        std::function<QString()> modelFile;
        /// What is recorded so far, but for so many samples at its beginning, and at most so many; none once
        /// the recording has ended.
        std::function<std::vector<float>(size_t first, size_t count)> samplesAfter;
    };

    /// Has the engine load the model. The collaborators outlive this.
    explicit EarlyRecognition(Collaborators collaborators);
    /// Abandons what runs.
    ~EarlyRecognition() override;

    /// There are more samples.
    void hear();

    /// What has been recognised so far.
    [[nodiscard]] const LiveText &liveText() const { return m_text.live(); }

    /// The text of the recording, which has ended with these samples. Throws Error, and Cancelled.
    [[nodiscard]] QCoro::Task<QString> textOf(std::vector<float> recording, std::stop_token stop);

Q_SIGNALS:
    void liveTextChanged();

private:
    QCoro::Task<> load();
    [[nodiscard]] bool mayTakeSnapshot() const;
    QCoro::Task<> takeSnapshot();
    QCoro::Task<> recogniseSoFar();
    [[nodiscard]] size_t endOfSnapshot() const;
    /// What another model than the chosen one has recognised is forgotten. Throws Error when there is none.
    void useChosenModel();
    QCoro::Task<> recognise(std::vector<float> samples, size_t end, std::stop_token stop);

    const Collaborators m_services;
    size_t m_heard = 0;
    PauseDetector m_speech;
    SnapshotRhythm m_rhythm;
    QString m_model; // with which the text was recognised
    QString m_language;
    DictatedText m_text;
    std::shared_ptr<OneTimeEvent> m_snapshot; // the end of the one that runs; none when none does
    bool m_isLoaded = false;
    Scope m_scope;
};

} // namespace orvane
