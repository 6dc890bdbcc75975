#pragma once

#include <QQuickImageProvider>

namespace orvane {

/// The program's icons in any colour: "image://icon/NAME/RRGGBB".
class IconProvider : public QQuickImageProvider
{
public:
    IconProvider() : QQuickImageProvider(QQmlImageProviderBase::Image) {}

    QImage requestImage(const QString &id, QSize *size, const QSize &requestedSize) override;
};

} // namespace orvane
