#include "ui/indicator/IndicatorModule.h"

#include "ui/indicator/DrawnByProcessor.h"
#include "ui/indicator/IndicatorWindow.h"

extern "C" Q_DECL_EXPORT QWindow *orvaneMakeIndicatorWindow2(QObject *hud, std::function<void()> ready)
{
    orvane::drawWithTheProcessor();
    return new orvane::IndicatorWindow(hud, std::move(ready));
}
