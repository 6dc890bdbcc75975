#pragma once

#include "audio/AudioDecoder.h"
#include "engine/EngineProcessRegistry.h"
#include "history/HistoryStore.h"
#include "meeting/MeetingTranscriber.h"
#include "recognition/WhisperServerEngine.h"
#include "settings/AppSettings.h"
#include "settings/UserDefaults.h"
#include "tests/meeting/FakeMeetingSource.h"
#include "tests/support/Files.h"

#include <QDir>
#include <QtEndian>

#include <atomic>

namespace orvane {

/// All that a meeting needs, in a folder of its own, with an installed model and a microphone to be fed.
struct MeetingHome
{
    /// `folder` holds the data; the engine is looked for in the other one.
    MeetingHome(const QString &folder, const QString &engineFolder)
        : folders({.applicationSupport = folder, .resources = engineFolder, .temporary = folder}),
          defaults(folder + QStringLiteral("/settings.json")),
          decoder(engineFolder),
          engine({.resources = engineFolder, .folders = {}}, registry, folder)
    {
        installModel(QStringLiteral("base"));
    }

    void installModel(const QString &id)
    {
        QDir().mkpath(folders.models());
        test::put(models.localPath(id), "lmgg");
        models.refresh();
    }

    [[nodiscard]] QDir recordings() const { return folders.recordings(); }
    /// Names of the audio files and of the markers.
    [[nodiscard]] QStringList audio() const { return recordings().entryList({QStringLiteral("*.wav")}); }
    [[nodiscard]] QStringList markers() const { return recordings().entryList({QStringLiteral("*.json")}); }
    /// The whole record that stands first.
    [[nodiscard]] TranscriptRecord newestRecord()
    {
        return QCoro::waitFor(history.record(history.records().first().id));
    }
    /// How many samples the file holds that are those that were heard, from the first on; -1 when it is no
    /// finished WAV file or anything else is in it.
    [[nodiscard]] qint64 heardIn(const QString &audioFileName) const
    {
        const QByteArray bytes = test::contentOf(recordings().filePath(audioFileName));
        const auto count = static_cast<size_t>(bytes.size() - 44) / 2;
        if (bytes.size() < 44 || qFromLittleEndian<quint32>(bytes.constData() + 40) != count * 2 ||
            qFromLittleEndian<quint32>(bytes.constData() + 4) != count * 2 + 36)
            return -1;
        for (size_t i = 0; i < count; ++i) {
            if (qFromLittleEndian<qint16>(bytes.constData() + 44 + 2 * i) !=
                FakeMeetingSource::storedSample(i))
                return -1;
        }
        return static_cast<qint64>(count);
    }

    const StandardFolders folders;
    UserDefaults defaults;
    AppSettings settings{defaults};
    ModelManager models{folders.models()};
    HistoryStore history{folders};
    EngineProcessRegistry registry{QString()};
    AudioDecoder decoder;
    EngineTurns turns;
    WhisperServerEngine engine;
    TranscriptPipeline pipeline{engine, decoder};
    std::shared_ptr<FakeMeetingSource::Control> microphone = std::make_shared<FakeMeetingSource::Control>();
    struct Access
    {
        bool isAllowed = true;
        std::chrono::milliseconds takes{1};
    };
    std::shared_ptr<Access> microphoneAccess = std::make_shared<Access>();
    /// What the disk is said to have room for.
    std::shared_ptr<std::atomic<qint64>> freeSpace = std::make_shared<std::atomic<qint64>>(1LL << 40);
    MeetingTranscriber meeting{
        {.models = models,
         .settings = settings,
         .history = history,
         .pipeline = pipeline,
         .turns = turns,
         .makeSource = [control = microphone] { return std::make_unique<FakeMeetingSource>(control); },
         .requestMicrophone = [access = microphoneAccess](std::stop_token stop) -> QCoro::Task<bool> {
             return [](Access given, std::stop_token stop) -> QCoro::Task<bool> {
                 co_await sleepFor(given.takes, stop);
                 co_return given.isAllowed;
             }(*access, std::move(stop));
         },
         .freeSpace = [space = freeSpace](const QString &) -> qint64 { return *space; }},
        folders.recordings()};
};

} // namespace orvane
