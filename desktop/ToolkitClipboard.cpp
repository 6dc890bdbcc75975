#include "desktop/ToolkitClipboard.h"

#include <QGuiApplication>
#include <QInputMethodQueryEvent>
#include <QMimeData>
#include <QWindow>

using namespace Qt::StringLiterals;

namespace orvane::ToolkitClipboard {

void offer(const QString &text, QClipboard::Mode mode)
{
    auto *data = new QMimeData; // the clipboard owns it
    data->setText(text);
    // Tells programs that keep a history of the clipboard not to keep this.
    data->setData(u"org.nspasteboard.ConcealedType"_s, {});
    data->setData(u"x-kde-passwordManagerHint"_s, "secret"_ba);
    QGuiApplication::clipboard()->setMimeData(data, mode);
}

bool focusIsLostOnUs()
{
    if (!QGuiApplication::focusWindow())
        return false;
    QInputMethodQueryEvent query(Qt::ImEnabled);
    if (QObject *focus = QGuiApplication::focusObject())
        QCoreApplication::sendEvent(focus, &query);
    return !query.value(Qt::ImEnabled).toBool();
}

} // namespace orvane::ToolkitClipboard
