#pragma once

#include <QString>

namespace orvane {

/// Shows the user what a dictation does, without taking the focus from the application dictated into.
/// Main thread.
class DictationIndicator
{
public:
    virtual ~DictationIndicator() = default;

    /// Shows it, on the screen under the pointer. Nothing changes when it is shown already.
    virtual void show() = 0;
    /// Takes it away at once, also when it was still about to be shown.
    virtual void hide() = 0;
    /// Shows a text alone for a few seconds, in place of everything else.
    virtual void notice(const QString &text) = 0;

protected:
    DictationIndicator() = default;
    Q_DISABLE_COPY_MOVE(DictationIndicator)
};

} // namespace orvane
