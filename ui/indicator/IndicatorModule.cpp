#include "ui/indicator/IndicatorModule.h"

#include "ui/indicator/DrawnByProcessor.h"
#include "ui/indicator/IndicatorWindow.h"

extern "C" Q_DECL_EXPORT QWindow *orvaneMakeIndicatorWindow3(QObject *hud, std::function<bool()> isBlended,
                                                             std::function<void()> ready)
{
    orvane::drawWithTheProcessor();
    return new orvane::IndicatorWindow(hud, std::move(isBlended), std::move(ready));
}
