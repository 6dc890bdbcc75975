#pragma once

#include "dictation/DictationIndicator.h"

#include <memory>

namespace orvane {

class DictationHUDModel;
class HUDController;

/// The dictation indicator on the screen: what a dictation says of itself, in the capsule's window. Neither
/// exists before it is first shown. Needs a QApplication that outlives this.
class DictationPanel : public DictationIndicator
{
public:
    /// The module "orvane-indicator" lies in that folder.
    explicit DictationPanel(const QString &moduleFolder);
    ~DictationPanel() override;
    Q_DISABLE_COPY_MOVE(DictationPanel)

    void show(DictationController &dictation, AppSettings &settings) override;
    void hide() override;
    void notice(const QString &text) override;

private:
    void make(DictationController &dictation, AppSettings &settings);

    const QString m_moduleFolder;
    std::unique_ptr<DictationHUDModel> m_model;
    std::unique_ptr<HUDController> m_hud;
};

} // namespace orvane
