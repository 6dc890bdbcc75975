#pragma once

#include "dictation/Battery.h"
#include "engine/EngineProcessRegistry.h"
#include "engine/EngineTurns.h"
#include "recognition/WhisperServerEngine.h"

#include <QTemporaryDir>

namespace orvane::test {

/// Has the real engine recognise recordings, as wholes and as dictations that are recognised while they are
/// spoken.
class DictationReplay
{
public:
    struct Dictated
    {
        QString text;
        /// Requests while it was spoken.
        int snapshots = 0;
    };

    /// The engine lies in the folder; `model` is a file.
    DictationReplay(const QString &engineFolder, const QString &model);

    [[nodiscard]] QString whole(const std::vector<float> &samples);
    /// As if the engine took no time, which makes the most cuts.
    [[nodiscard]] Dictated dictated(const std::vector<float> &samples);

private:
    const QString m_model;
    QTemporaryDir m_folder;
    EngineProcessRegistry m_registry{m_folder.filePath(QStringLiteral("pids.txt"))};
    WhisperServerEngine m_engine;
    EngineTurns m_turns;
    Battery m_battery;
};

} // namespace orvane::test
