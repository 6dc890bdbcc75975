#pragma once

#include "base/Scope.h"
#include "ui/indicator/IndicatorModule.h"

#include <QCoroTask>
#include <QTimer>

#include <functional>
#include <memory>

class QWindow;

namespace orvane {

class DictationHUDModel;

/// Owns the window of the dictation indicator: a floating capsule that never takes the focus. Its scene is
/// in a module of its own that is loaded when the indicator is first shown, and then kept. Needs a
/// QApplication that outlives this.
class HUDController
{
public:
    using Fallback = std::function<void(const QString &)>;

    /// Shows that model, which outlives this. The module "orvane-indicator" lies in that folder; without
    /// it nothing is shown, and notices go to `fallback`.
    HUDController(DictationHUDModel &hud, const QString &moduleFolder, Fallback fallback);
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
    void giveUp();
    void present();
    void reposition();
    void showHelp();

    DictationHUDModel &m_hud;
    const QString m_moduleFile;
    std::unique_ptr<QWindow> m_window;
    const Fallback m_fallback;
    bool m_cannotBeMade = false;
    bool m_isBeingMade = false;
    bool m_isReady = false;
    bool m_wantsVisible = false;
    bool m_isOfDictation = false; // from show() to hide(), whatever is noticed between
    QTimer m_again;
    QTimer m_endOfNotice;
    QTimer m_help;
    Scope m_scope;
};

} // namespace orvane
