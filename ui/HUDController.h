#pragma once

#include "dictation/DictationIndicator.h"
#include "ui/indicator/IndicatorModule.h"

#include <QCoroTask>
#include <QTimer>

#include <memory>
#include <stop_token>

class QWindow;

namespace orvane {

class DictationHUDModel;

/// Owns the window of the dictation indicator: a floating capsule that never takes the focus. Its scene is
/// in a module of its own that is loaded when the indicator is first shown, and then kept. Needs a
/// QApplication that outlives this.
class HUDController : public DictationIndicator
{
public:
    /// Shows that model, which outlives this. The module "orvane-indicator" lies in that folder; without
    /// it nothing is shown.
    HUDController(DictationHUDModel &hud, const QString &moduleFolder);
    ~HUDController() override;
    Q_DISABLE_COPY_MOVE(HUDController)

    void show() override;
    void hide() override;
    void notice(const QString &text) override;

private:
    void appear();
    QCoro::Task<> makeWindow();
    void present();
    void reposition();
    void showHelp();

    DictationHUDModel &m_hud;
    const QString m_moduleFile;
    std::unique_ptr<QWindow> m_window;
    bool m_isBeingMade = false;
    bool m_isReady = false;
    bool m_wantsVisible = false;
    QTimer m_again;
    QTimer m_endOfNotice;
    QTimer m_help;
    std::stop_source m_lifetime;
};

} // namespace orvane
