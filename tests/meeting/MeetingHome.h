#pragma once

#include "audio/AudioDecoder.h"
#include "engine/EngineProcessRegistry.h"
#include "history/HistoryStore.h"
#include "meeting/MeetingTranscriber.h"
#include "recognition/WhisperServerEngine.h"
#include "settings/AppSettings.h"
#include "settings/UserDefaults.h"
#include "tests/meeting/FakeMeetingSource.h"

#include <QDir>

namespace orvane {

/// All that a meeting needs, in a folder of its own, with an installed model and a microphone to be fed.
class MeetingHome
{
public:
    /// `folder` holds the data; the engine is looked for in the other one.
    MeetingHome(const QString &folder, const QString &engineFolder);

    [[nodiscard]] MeetingTranscriber &meeting() { return *m_meeting; }
    [[nodiscard]] HistoryStore &history() { return *m_history; }
    /// The whole record that stands first.
    [[nodiscard]] TranscriptRecord newestRecord()
    {
        return QCoro::waitFor(m_history->record(m_history->records().first().id));
    }
    [[nodiscard]] AppSettings &settings() { return m_settings; }
    [[nodiscard]] ModelManager &models() { return m_models; }
    [[nodiscard]] WhisperServerEngine &engine() { return *m_engine; }
    [[nodiscard]] const EngineTurns &turns() const { return m_turns; }
    [[nodiscard]] FakeMeetingSource &microphone() { return *m_control->current; }
    [[nodiscard]] FakeMeetingSource::Control &control() { return *m_control; }

    [[nodiscard]] QDir recordings() const { return m_folders.recordings(); }
    /// Names of the audio files and of the markers.
    [[nodiscard]] QStringList audio() const { return recordings().entryList({QStringLiteral("*.wav")}); }
    [[nodiscard]] QStringList markers() const { return recordings().entryList({QStringLiteral("*.json")}); }
    /// How many samples the file holds that are those of the pattern, from its first on; -1 when it is no
    /// finished WAV file or anything else is in it.
    [[nodiscard]] qint64 patternIn(const QString &audioFileName) const;

    void installModel(const QString &id);
    /// What the disk is said to have room for.
    void setFreeSpace(qint64 bytes) { *m_freeSpace = bytes; }
    void setMicrophoneAllowed(bool allowed) { *m_isAllowed = allowed; }

private:
    const StandardFolders m_folders;
    UserDefaults m_defaults;
    AppSettings m_settings;
    ModelManager m_models;
    EngineProcessRegistry m_registry{QString()};
    AudioDecoder m_decoder;
    EngineTurns m_turns;
    std::shared_ptr<FakeMeetingSource::Control> m_control = std::make_shared<FakeMeetingSource::Control>();
    std::shared_ptr<std::atomic<qint64>> m_freeSpace = std::make_shared<std::atomic<qint64>>(1LL << 40);
    std::shared_ptr<bool> m_isAllowed = std::make_shared<bool>(true);
    std::unique_ptr<HistoryStore> m_history;
    std::unique_ptr<WhisperServerEngine> m_engine;
    std::unique_ptr<TranscriptPipeline> m_pipeline;
    std::unique_ptr<MeetingTranscriber> m_meeting;
};

} // namespace orvane
