#pragma once

#include "dictation/DictationIndicator.h"

#include <QObject>

#include <memory>

namespace orvane {

class DictationHUDModel;
class HUDController;
class KeyTap;

/// The dictation indicator on the screen: what a dictation says of itself, in the capsule's window. Neither
/// exists before it is first shown. Needs a QApplication that outlives this.
class DictationPanel : public QObject, public DictationIndicator
{
    Q_OBJECT

public:
    /// The module "orvane-indicator" lies in that folder. `keys` are those that the hint names.
    DictationPanel(const QString &moduleFolder, const KeyTap &keys);
    ~DictationPanel() override;

    void show(DictationController &dictation, AppSettings &settings) override;
    void hide() override;
    void notice(const QString &text) override;

Q_SIGNALS:
    /// There is no window to show the notice in: it has to be said elsewhere.
    void noticeNotShown(const QString &text);

private:
    void make(DictationController &dictation, AppSettings &settings);
    void follow(DictationController &dictation);

    const QString m_moduleFolder;
    const KeyTap &m_keys;
    std::unique_ptr<DictationHUDModel> m_model;
    std::unique_ptr<HUDController> m_hud;
};

} // namespace orvane
