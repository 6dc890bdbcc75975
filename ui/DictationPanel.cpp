#include "ui/DictationPanel.h"

#include "desktop/KeyTap.h"
#include "dictation/DictationController.h"
#include "settings/AppSettings.h"
#include "ui/DictationHUDModel.h"
#include "ui/HUDController.h"

namespace orvane {

namespace {

DictationHUDModel::Keys keysThatWork(const KeyTap &keys, const AppSettings &settings)
{
    DictationHUDModel::Keys working{.escape = keys.isActive() && !keys.escapeIsMissing()};
    if (const auto shortcuts = keys.shortcuts()) {
        working.twice = shortcuts->twice;
        working.once = shortcuts->once;
    } else if (keys.isActive() && keys.has(settings.dictationTrigger())) {
        working.twice = settings.dictationTriggerName();
    }
    return working;
}

} // namespace

DictationPanel::DictationPanel(const QString &moduleFolder, const KeyTap &keys)
    : m_moduleFolder(moduleFolder),
      m_keys(keys)
{}

DictationPanel::~DictationPanel() = default;

void DictationPanel::show(DictationController &dictation, AppSettings &settings)
{
    if (!m_hud)
        make(dictation, settings);
    m_hud->show();
}

void DictationPanel::make(DictationController &dictation, AppSettings &settings)
{
    m_model = std::make_unique<DictationHUDModel>(settings);
    m_hud = std::make_unique<HUDController>(*m_model, m_moduleFolder,
                                            [this](const QString &text) { Q_EMIT noticeNotShown(text); });
    follow(dictation);

    const auto showKeys = [this, &settings] { m_model->setKeys(keysThatWork(m_keys, settings)); };
    QObject::connect(&m_keys, &KeyTap::activeChanged, m_model.get(), showKeys);
    QObject::connect(&m_keys, &KeyTap::keysChanged, m_model.get(), showKeys);
    QObject::connect(&m_keys, &KeyTap::grabIsMissingChanged, m_model.get(), showKeys);
    QObject::connect(&settings, &AppSettings::dictationTriggerNameChanged, m_model.get(), showKeys);
    showKeys();
}

void DictationPanel::follow(DictationController &dictation)
{
    DictationHUDModel *model = m_model.get();
    const AudioRecorder &recorder = dictation.recorder();
    const auto showState = [model, &dictation] {
        // The capsule goes as it was; a state that it cannot show any more would only flash.
        if (dictation.state() != DictationState::Idle)
            model->setState(dictation.state(), dictation.processingMode());
    };
    QObject::connect(&dictation, &DictationController::stateChanged, model, showState);
    QObject::connect(model, &DictationHUDModel::cancelRequested, &dictation, &DictationController::cancel);
    QObject::connect(&recorder, &AudioRecorder::levelChanged, model,
                     [model, &recorder] { model->setWaveform(recorder.waveform()); });
    QObject::connect(&recorder, &AudioRecorder::deviceIsSilentChanged, model,
                     [model, &recorder] { model->setDeviceIsSilent(recorder.deviceIsSilent()); });
    QObject::connect(&dictation, &DictationController::liveTextChanged, model, [model, &dictation] {
        if (dictation.state() != DictationState::Idle)
            model->setLiveText(dictation.liveText());
    });
    showState();
    model->setWaveform(recorder.waveform());
}

void DictationPanel::hide()
{
    if (m_hud)
        m_hud->hide();
}

void DictationPanel::notice(const QString &text)
{
    if (m_hud)
        m_hud->notice(text);
    else
        Q_EMIT noticeNotShown(text);
}

} // namespace orvane
