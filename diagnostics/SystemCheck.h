#pragma once

#include "base/StandardFolders.h"
#include "diagnostics/CheckRun.h"
#include "diagnostics/MicrophoneCheck.h"

#include <chrono>
#include <memory>

namespace orvane {

class AppSettings;
class CorrectionModelManager;
class EngineTurns;
class KeyTap;
class ModelManager;
class TextCorrectionService;
class WhisperServerEngine;

/// Whether everything that the program needs works on this machine. Main thread.
class SystemCheck : public CheckRun
{
    Q_OBJECT

public:
    /// They outlive this object.
    struct Collaborators
    {
        const AppSettings &settings;
        ModelManager &models;
        CorrectionModelManager &correctionModels;
        WhisperServerEngine &engine;
        TextCorrectionService &corrector;
        const EngineTurns &turns;
        StandardFolders folders;
        /// The application's; without one a tap is made for the check.
        const KeyTap *keys = nullptr;
        /// How long the microphone is listened to.
        std::chrono::milliseconds listeningTime = std::chrono::seconds(1);
    };

    explicit SystemCheck(const Collaborators &collaborators, QObject *parent = nullptr);
    ~SystemCheck() override;

    [[nodiscard]] const MicrophoneCheck &microphone() const { return *m_microphone; }

private:
    using Microphone = std::shared_ptr<MicrophoneCheck>;

    SystemCheck(const Collaborators &collaborators, const Microphone &microphone, QObject *parent);
    [[nodiscard]] static QList<Check> checks(const Collaborators &services, const Microphone &microphone);

    const Microphone m_microphone;
};

} // namespace orvane
