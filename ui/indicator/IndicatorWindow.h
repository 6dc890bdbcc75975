#pragma once

#include <QQmlComponent>
#include <QQmlEngine>
#include <QQmlIncubator>
#include <QQuickWindow>

#include <functional>

namespace orvane {

/// A transparent window with Indicator.qml in it.
class IndicatorWindow : public QQuickWindow, private QQmlIncubator
{
public:
    /// As IndicatorWindowMaker says.
    IndicatorWindow(QObject *hud, std::function<bool()> isBlended, std::function<void()> ready);
    ~IndicatorWindow() override;
    Q_DISABLE_COPY_MOVE(IndicatorWindow)

protected:
    void showEvent(QShowEvent *event) override;

private:
    void beginScene();
    void statusChanged(Status status) override;
    void followCapsule();
    void shape();

    QQmlEngine m_engine;
    QQmlComponent m_component;
    const std::function<bool()> m_isBlended;
    const std::function<void()> m_ready;
    int m_shapedHeight = 0;
};

} // namespace orvane
