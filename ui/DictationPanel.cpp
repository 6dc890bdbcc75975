#include "ui/DictationPanel.h"

#include "dictation/DictationController.h"
#include "ui/DictationHUDModel.h"
#include "ui/HUDController.h"

namespace orvane {

DictationPanel::DictationPanel(const QString &moduleFolder) : m_moduleFolder(moduleFolder) {}

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
    m_hud = std::make_unique<HUDController>(*m_model, m_moduleFolder);

    DictationHUDModel *model = m_model.get();
    const AudioRecorder &recorder = dictation.recorder();
    const auto showState = [model, &dictation] {
        // The capsule goes as it was; a state that it cannot show any more would only flash.
        if (dictation.state() != DictationState::Idle)
            model->setState(dictation.state(), dictation.processingMode());
    };
    QObject::connect(&dictation, &DictationController::stateChanged, model, showState);
    QObject::connect(&recorder, &AudioRecorder::levelChanged, model,
                     [model, &recorder] { model->setWaveform(recorder.waveform()); });
    QObject::connect(&recorder, &AudioRecorder::deviceIsSilentChanged, model,
                     [model, &recorder] { model->setDeviceIsSilent(recorder.deviceIsSilent()); });
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
}

} // namespace orvane
