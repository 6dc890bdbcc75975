#pragma once

#include <QColor>
#include <QList>
#include <QQuickPaintedItem>
#include <QVariantAnimation>
#include <QtQml/qqmlregistration.h>

namespace orvane {

/// Levels as bars side by side. A change is animated; nothing is drawn while nothing changes.
class Waveform : public QQuickPaintedItem
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QList<float> levels READ levels WRITE setLevels NOTIFY levelsChanged)
    Q_PROPERTY(QColor color MEMBER m_color NOTIFY colorChanged)

public:
    explicit Waveform(QQuickItem *parent = nullptr);

    /// 0…1. Their number may change, but is not animated.
    [[nodiscard]] QList<float> levels() const { return m_levels; }
    void setLevels(const QList<float> &levels);

    void paint(QPainter *painter) override;

Q_SIGNALS:
    void levelsChanged();
    void colorChanged();

private:
    void showBetween(qreal progress);

    QList<float> m_levels;
    QList<float> m_from; ///< what was shown when the levels changed
    QList<float> m_shown;
    QColor m_color;
    QVariantAnimation m_animation;
};

} // namespace orvane
