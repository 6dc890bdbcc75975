#pragma once

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
class HUDController
{
public:
    /// Shows that model, which outlives this. The module "orvane-indicator" lies in that folder; without
    /// it nothing is shown.
    HUDController(DictationHUDModel &hud, const QString &moduleFolder);
    ~HUDController();
    Q_DISABLE_COPY_MOVE(HUDController)

    /// On the screen under the pointer. Nothing changes when it is shown already.
    void show();
    /// At once, also when it was still about to be shown.
    void hide();
    /// Shows a text alone for a few seconds, in place of everything else, which comes back if it was shown.
    void notice(const QString &text);

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
    bool m_isOfDictation = false; // from show() to hide(), whatever is noticed between
    QTimer m_again;
    QTimer m_endOfNotice;
    QTimer m_help;
    std::stop_source m_lifetime;
};

} // namespace orvane
