#pragma once

#include <QCoroTask>

#include <QString>
#include <QStringList>

#include <memory>

namespace orvane {

/// Puts a text where the user types, by way of the clipboard and the paste shortcut.
class TextInjector
{
public:
    enum class Outcome {
        Nothing, ///< the text is blank, or there is no clipboard; nothing was changed
        Pasted,  ///< the focused application was told to paste
        /// No application could be told, or a window of our own has the focus where nothing can be typed: the
        /// user pastes it.
        LeftOnClipboard
    };

    /// The injector of this display, never null. Needs the application object.
    [[nodiscard]] static std::unique_ptr<TextInjector> forDisplay();

    virtual ~TextInjector() = default;

    /// Inserts the text without the white space around it, which then stays on the clipboard, marked as
    /// nothing for a clipboard history. The focus stays where it is. Takes up to 1 s while the user holds a
    /// modifier key. Never throws; goes on when this object ends. Call on the main thread.
    virtual QCoro::Task<Outcome> insert(QString text) = 0;

    /// Classes of windows that are to be treated as terminals, where another shortcut pastes.
    virtual void setTerminalClasses(const QStringList &classes) { Q_UNUSED(classes) }
};

} // namespace orvane
