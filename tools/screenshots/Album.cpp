#include "tools/screenshots/Album.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QPainter>
#include <QPainterPath>
#include <QQuickItem>
#include <QQuickWindow>

#include <cstdio>

using namespace Qt::StringLiterals;

namespace {

const QStringList picturesOfReadme = {u"transcript-light-ru.png"_s, u"corrected-light-ru.png"_s,
                                      u"first-dark-en.png"_s, u"models-dark-en.png"_s};

/// A desktop with that much of it around what stands on it.
QImage desktop(const QImage &content, int around, bool isDark)
{
    const qreal scale = content.devicePixelRatio();
    QImage desktop((content.deviceIndependentSize().toSize() + QSize(2 * around, 2 * around)) * scale,
                   QImage::Format_RGB32);
    desktop.setDevicePixelRatio(scale);
    QPainter painter(&desktop);
    const QRectF all(QPointF(), desktop.deviceIndependentSize());
    QLinearGradient sky(all.topLeft(), all.bottomRight());
    sky.setColorAt(0, isDark ? u"#2b3350"_s : u"#f3c9a5"_s);
    sky.setColorAt(0.45, isDark ? u"#1d2138"_s : u"#cf8f8a"_s);
    sky.setColorAt(1, isDark ? u"#3a2338"_s : u"#4b5a7d"_s);
    painter.fillRect(all, sky);
    return desktop;
}

QImage windowOnDesktop(const QImage &window)
{
    constexpr int around = 56;
    constexpr int shadow = 24;
    constexpr qreal corner = 12;
    QImage picture = desktop(window, around, false);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF frame(QPointF(around, around), window.deviceIndependentSize());
    painter.setPen(Qt::NoPen);
    for (int i = shadow; i > 0; i -= 2) {
        painter.setBrush(QColor(0, 0, 0, 6));
        painter.drawRoundedRect(frame.adjusted(-i, 4 - i, i, 8 + i), corner + i, corner + i);
    }
    QPainterPath shape;
    shape.addRoundedRect(frame, corner, corner);
    painter.setClipPath(shape);
    painter.drawImage(frame.topLeft(), window);
    return picture;
}

} // namespace

void settle()
{
    QElapsedTimer time;
    for (time.start(); time.elapsed() < 500;)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 50);
}

void Album::take(QWindow *window, const QString &page) const
{
    settle();
    const QString name = nameOf(page);
    const QImage picture = static_cast<QQuickWindow *>(window)->grabWindow();
    save(picture, name);
    if (picturesOfReadme.contains(name))
        save(windowOnDesktop(picture), u"desktop-"_s + name);
}

void Album::takeIndicator(QWindow *indicator, const QString &state) const
{
    constexpr int around = 32;
    constexpr qreal corner = 28;
    settle();
    auto *window = static_cast<QQuickWindow *>(indicator);
    QImage all = window->grabWindow(); // which is black where nothing is drawn
    all.setDevicePixelRatio(window->effectiveDevicePixelRatio());
    const int height = window->contentItem()->childItems().constFirst()->property("capsuleHeight").toInt();
    QImage picture = desktop(all, around, isDark);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    QPainterPath capsule;
    capsule.addRoundedRect(around, around + window->height() - height, window->width(), height, corner,
                           corner);
    painter.setClipPath(capsule);
    painter.drawImage(QPointF(around, around), all);
    painter.end();
    save(picture, nameOf(state));
}

QString Album::nameOf(const QString &page) const
{
    return u"%1-%2-%3.png"_s.arg(page, isDark ? u"dark"_s : u"light"_s, language);
}

void Album::save(const QImage &picture, const QString &name) const
{
    const QString file = folder.filePath(name);
    if (!picture.save(file))
        qFatal("cannot write %s", qPrintable(file));
    std::printf("%s\n", qPrintable(file));
}
