#include "ui/indicator/IndicatorModule.h"

#include "ui/indicator/IndicatorWindow.h"

#include <QQuickWindow>

namespace {

/// What is shown here is flat and small: the processor draws it without the time and the memory that a
/// graphics driver takes before its first frame.
void drawWithTheProcessor()
{
    if (!qEnvironmentVariableIsSet("QT_QUICK_BACKEND"))
        QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
}

} // namespace

extern "C" Q_DECL_EXPORT QWindow *orvaneMakeIndicatorWindow1(QObject *hud, std::function<void()> ready)
{
    drawWithTheProcessor();
    return new orvane::IndicatorWindow(hud, std::move(ready));
}
