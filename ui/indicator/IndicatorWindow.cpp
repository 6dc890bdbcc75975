#include "ui/indicator/IndicatorWindow.h"

#include <QPainterPath>
#include <QQuickItem>

#include <memory>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

constexpr QSize fullSize(380, 174);
constexpr int cornerRadius = 28; // pixels
constexpr char capsuleHeight[] = "capsuleHeight";

QRegion roundedShape(QRect capsule)
{
    QPainterPath shape;
    shape.addRoundedRect(capsule, cornerRadius, cornerRadius);
    return QRegion(shape.toFillPolygon().toPolygon());
}

} // namespace

IndicatorWindow::IndicatorWindow(QObject *hud, std::function<bool()> isBlended, std::function<void()> ready)
    : QQmlIncubator(Asynchronous),
      m_component(&m_engine),
      m_isBlended(std::move(isBlended)),
      m_ready(std::move(ready))
{
    setColor(Qt::transparent);
    resize(fullSize);
    m_engine.addImportPath(u"qrc:/qt/qml"_s);
    m_engine.setIncubationController(incubationController());
    connect(&m_component, &QQmlComponent::statusChanged, this, [this] { beginScene(); });
    m_component.loadUrl(QUrl(u"qrc:/qt/qml/Orvane/Indicator/Indicator.qml"_s), QQmlComponent::Asynchronous);
    // Looked for while another thread loads the scene.
    setInitialProperties(
        {{u"hud"_s, QVariant::fromValue(hud)}, {u"fontFamily"_s, hud->property("fontFamily")}});
}

IndicatorWindow::~IndicatorWindow()
{
    clear();
    // Before the engine that its bindings run in.
    qDeleteAll(contentItem()->childItems());
}

void IndicatorWindow::beginScene()
{
    if (m_component.isReady())
        m_component.create(*this);
    else if (m_component.isError())
        qWarning("The dictation indicator could not be made: %s", qUtf8Printable(m_component.errorString()));
}

void IndicatorWindow::statusChanged(Status status)
{
    if (status == Error)
        qWarning("The dictation indicator could not be made: %s",
                 qUtf8Printable(errors().constFirst().toString()));
    if (status != Ready)
        return;
    auto *scene = qobject_cast<QQuickItem *>(object());
    scene->setParentItem(contentItem());
    scene->setSize(fullSize);
    connect(this, &QQuickWindow::frameSwapped, this, [this] { followCapsule(); });
    m_ready();
}

void IndicatorWindow::showEvent(QShowEvent *event)
{
    shape(); // whether windows are blended may have changed
    QQuickWindow::showEvent(event);
}

// After each frame, so that no place is in the window that was not drawn yet.
void IndicatorWindow::followCapsule()
{
    if (object()->property(capsuleHeight).toInt() != m_shapedHeight)
        shape();
}

void IndicatorWindow::shape()
{
    m_shapedHeight = object()->property(capsuleHeight).toInt();
    const QRect capsule(0, height() - m_shapedHeight, width(), m_shapedHeight);
    setMask(m_isBlended() ? QRegion(capsule) : roundedShape(capsule));
}

} // namespace orvane
