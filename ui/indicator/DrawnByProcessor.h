#pragma once

#include <QQuickWindow>

namespace orvane {

/// Before a module's first scene: what is shown here is flat, and the processor draws it without the time and
/// the memory that a graphics driver takes before its first frame.
inline void drawWithTheProcessor()
{
    const bool isChosen = QQuickWindow::graphicsApi() == QSGRendererInterface::Software;
    if (!isChosen && !qEnvironmentVariableIsSet("QT_QUICK_BACKEND"))
        QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
}

} // namespace orvane
