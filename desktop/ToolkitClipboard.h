#pragma once

#include <QClipboard>
#include <QString>

#include <functional>

/// The clipboard as the toolkit has it, and who of us has the focus. Main thread; needs a QGuiApplication.
namespace orvane::ToolkitClipboard {

/// Offered until another program takes the selection over, so that an application which asks for it long
/// after the keys gets it too. Marked as nothing for a history of the clipboard. `asked` is called whenever
/// some program gets the text.
void offer(const QString &text, QClipboard::Mode mode, std::function<void()> asked = [] {});

/// Whether what is typed goes to a window of our own that takes no text.
[[nodiscard]] bool focusIsLostOnUs();

} // namespace orvane::ToolkitClipboard
