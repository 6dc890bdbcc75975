#include "ui/indicator/IndicatorWindow.h"

#include <QFontInfo>
#include <QGuiApplication>
#include <QQuickItem>

#include <memory>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

constexpr QSize capsuleSize(380, 126);

QString fontFamily()
{
    const QString intended = u"Inter"_s;
    return QFontInfo(QFont(intended)).family() == intended ? intended : QGuiApplication::font().family();
}

} // namespace

IndicatorWindow::IndicatorWindow(QObject *hud, std::function<void()> ready)
    : QQmlIncubator(Asynchronous),
      m_component(&m_engine),
      m_ready(std::move(ready))
{
    setColor(Qt::transparent);
    resize(capsuleSize);
    m_engine.addImportPath(u"qrc:/qt/qml"_s);
    m_engine.setIncubationController(incubationController());
    connect(&m_component, &QQmlComponent::statusChanged, this, [this] { beginScene(); });
    m_component.loadUrl(QUrl(u"qrc:/qt/qml/Orvane/Indicator/Indicator.qml"_s), QQmlComponent::Asynchronous);
    // Looked for while another thread loads the scene.
    setInitialProperties({{u"hud"_s, QVariant::fromValue(hud)}, {u"fontFamily"_s, fontFamily()}});
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
    auto *capsule = qobject_cast<QQuickItem *>(object());
    capsule->setParentItem(contentItem());
    capsule->setSize(capsuleSize);
    m_ready();
}

} // namespace orvane
