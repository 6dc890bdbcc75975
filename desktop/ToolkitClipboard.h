#pragma once

#include <QClipboard>
#include <QString>

/// The clipboard as the toolkit has it, and who of us has the focus. Main thread; needs a QGuiApplication.
namespace orvane::ToolkitClipboard {

/// Offered until another program takes the selection over, so that an application which asks for it long
/// after the keys gets it too. Marked as nothing for a history of the clipboard.
void offer(const QString &text, QClipboard::Mode mode);

/// Whether what is typed goes to a window of our own that takes no text.
[[nodiscard]] bool focusIsLostOnUs();

} // namespace orvane::ToolkitClipboard
