#pragma once

#include <QStringList>

/// The keys that tell the focused application to paste, pressed for the user. Every function that asks the
/// display waits for its answers: call them on a pool thread.
namespace orvane::PasteKeys {

/// Who receives what is typed now.
enum class Receiver { Nobody, Application, Terminal };

/// Whether this display lets a program press keys. Waits for nothing; for the main thread.
[[nodiscard]] bool canBePressed();

/// `terminalClasses` are windows that the user says are terminals, beside those that are known.
[[nodiscard]] Receiver receiver(const QStringList &terminalClasses);

/// Presses them. Modifiers that the user holds are waited for, up to 1 s, then released and not pressed
/// again. False when nothing could be pressed, or a modifier stays down that would change what it means.
[[nodiscard]] bool press(Receiver receiver);

} // namespace orvane::PasteKeys
