#pragma once

#include <QString>

namespace orvane {

class AppSettings;
class DictationController;

/// Shows the user what a dictation does, without taking the focus from the application dictated into.
/// Main thread.
class DictationIndicator
{
public:
    virtual ~DictationIndicator() = default;

    /// Shows how that dictation goes, on the screen under the pointer, and follows it until hide(). Always
    /// the same two objects, which outlive this.
    virtual void show(DictationController &dictation, AppSettings &settings) = 0;
    /// Takes it away at once, also when it was still about to be shown.
    virtual void hide() = 0;
    /// Shows a text alone for a few seconds, in place of everything else. After the first show().
    virtual void notice(const QString &text) = 0;

protected:
    DictationIndicator() = default;
    Q_DISABLE_COPY_MOVE(DictationIndicator)
};

} // namespace orvane
