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
    IndicatorWindow(QObject *hud, std::function<void()> ready);
    ~IndicatorWindow() override;
    Q_DISABLE_COPY_MOVE(IndicatorWindow)

private:
    void beginScene();
    void statusChanged(Status status) override;

    QQmlEngine m_engine;
    QQmlComponent m_component;
    std::function<void()> m_ready;
};

} // namespace orvane
