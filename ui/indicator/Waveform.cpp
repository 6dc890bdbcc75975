#include "ui/indicator/Waveform.h"

#include <QPainter>
#include <QQuickWindow>

#include <algorithm>

namespace orvane {

namespace {

constexpr qreal barWidth = 4;        // also the height of the lowest bar, so that silence is a row of dots
constexpr int animationLength = 120; // milliseconds

} // namespace

Waveform::Waveform(QQuickItem *parent) : QQuickPaintedItem(parent)
{
    m_animation.setStartValue(0.0);
    m_animation.setEndValue(1.0);
    m_animation.setDuration(animationLength);
    m_animation.setEasingCurve(QEasingCurve::OutCubic);
    connect(&m_animation, &QVariantAnimation::valueChanged, this,
            [this](const QVariant &progress) { showBetween(progress.toReal()); });
    connect(this, &Waveform::colorChanged, this, [this] { update(); });
}

void Waveform::setLevels(const QList<float> &levels)
{
    if (m_levels == levels)
        return;
    m_levels = levels;
    m_from = m_shown;
    m_from.resize(levels.size());
    m_animation.stop();
    if (isVisible())
        m_animation.start();
    else
        showBetween(1);
    Q_EMIT levelsChanged();
}

void Waveform::showBetween(qreal progress)
{
    m_shown.resize(m_levels.size());
    for (qsizetype i = 0; i < m_shown.size(); ++i)
        m_shown[i] = std::lerp(m_from.at(i), m_levels.at(i), float(progress));
    update();
}

void Waveform::paint(QPainter *painter)
{
    if (m_shown.size() < 2)
        return;
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(Qt::NoPen);
    painter->setBrush(m_color);
    const qreal step = (width() - barWidth) / qreal(m_shown.size() - 1);
    const qreal pixels = window()->effectiveDevicePixelRatio();
    for (qsizetype i = 0; i < m_shown.size(); ++i) {
        const qreal length = std::lerp(barWidth, height(), qreal(std::clamp(m_shown.at(i), 0.0F, 1.0F)));
        // At whole pixels, or some bars would look blurred.
        const qreal x = std::round(qreal(i) * step * pixels) / pixels;
        painter->drawRoundedRect(QRectF(x, (height() - length) / 2, barWidth, length), barWidth / 2,
                                 barWidth / 2);
    }
}

} // namespace orvane
