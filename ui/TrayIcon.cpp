#include "ui/TrayIcon.h"

#include <QPainter>
#include <QPainterPath>
#include <QPixmap>

namespace orvane::TrayIcon {

namespace {

/// The picture is drawn on a grid of so many units.
constexpr int grid = 24;

const QColor ink(0x2b, 0x2b, 0x29);
const QColor accent(0xe5, 0x4b, 0x37);
const QColor paper(0xff, 0xff, 0xff);

void drawMicrophone(QPainter &painter)
{
    painter.setPen(Qt::NoPen);
    painter.setBrush(paper);
    painter.drawRoundedRect(QRectF(9.5, 4.5, 5, 9), 2.5, 2.5);

    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(paper, 1.6, Qt::SolidLine, Qt::RoundCap));
    QPainterPath stand;
    stand.arcMoveTo(QRectF(7, 6.5, 10, 10), 180);
    stand.arcTo(QRectF(7, 6.5, 10, 10), 180, 180);
    stand.moveTo(12, 16.5);
    stand.lineTo(12, 19.5);
    painter.drawPath(stand);
}

void drawDots(QPainter &painter)
{
    painter.setPen(Qt::NoPen);
    painter.setBrush(paper);
    for (const int x : {7, 12, 17})
        painter.drawEllipse(QPointF(x, 12), 1.8, 1.8);
}

QPixmap picture(Look look, int size)
{
    QPixmap pixmap(size, size);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(static_cast<double>(size) / grid, static_cast<double>(size) / grid);

    painter.setPen(Qt::NoPen);
    painter.setBrush(look == Look::Recording ? accent : ink);
    painter.drawRoundedRect(QRectF(1, 1, grid - 2, grid - 2), 6, 6);
    if (look == Look::Busy)
        drawDots(painter);
    else
        drawMicrophone(painter);
    return pixmap;
}

} // namespace

QIcon icon(Look look)
{
    QIcon icon;
    for (const int size : {16, 22, 24, 32, 48, 64})
        icon.addPixmap(picture(look, size));
    return icon;
}

} // namespace orvane::TrayIcon
