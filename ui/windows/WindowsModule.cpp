#include "ui/windows/WindowsModule.h"

#include "ui/indicator/DrawnByProcessor.h"
#include "ui/windows/IconProvider.h"

#include <QFontInfo>
#include <QGuiApplication>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickWindow>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

QString fontFamily()
{
    const QString intended = u"Inter"_s;
    return QFontInfo(QFont(intended)).family() == intended ? intended : QGuiApplication::font().family();
}

class QuickWindows final : public Windows
{
public:
    QuickWindows(QObject *desk, QObject *texts) : m_desk(desk)
    {
        m_engine.addImportPath(u"qrc:/qt/qml"_s);
        m_engine.addImageProvider(u"icon"_s, new IconProvider); // the engine's own from now on
        m_shared = make(u"Shared.qml"_s, {});
        if (!m_shared)
            return;
        shared("texts")->setProperty("table", QVariant::fromValue(texts));
        shared("theme")->setProperty("family", fontFamily());
    }

    std::unique_ptr<QWindow> make(Which which) override
    {
        std::unique_ptr<QObject> made =
            make(which == Which::Main ? u"MainWindow.qml"_s : u"settings/SettingsWindow.qml"_s,
                 {{u"desk"_s, QVariant::fromValue(m_desk)}});
        if (!qobject_cast<QWindow *>(made.get()))
            return nullptr;
        return std::unique_ptr<QWindow>(static_cast<QWindow *>(made.release()));
    }

    void setDark(bool dark) override { shared("theme")->setProperty("dark", dark); }
    void setAnimated(bool animated) override { shared("theme")->setProperty("animated", animated); }

private:
    std::unique_ptr<QObject> make(const QString &file, const QVariantMap &properties)
    {
        QQmlComponent component(&m_engine, QUrl(u"qrc:/qt/qml/Orvane/Windows/"_s + file));
        std::unique_ptr<QObject> made;
        if (component.isReady())
            made.reset(component.createWithInitialProperties(properties));
        if (!made)
            qWarning("%s could not be made: %s", qUtf8Printable(file),
                     qUtf8Printable(component.errorString()));
        return made;
    }

    [[nodiscard]] QObject *shared(const char *name) { return m_shared->property(name).value<QObject *>(); }

    QObject *m_desk;
    QQmlEngine m_engine;
    std::unique_ptr<QObject> m_shared;
};

} // namespace

} // namespace orvane

extern "C" Q_DECL_EXPORT orvane::Windows *orvaneMakeWindows1(QObject *desk, QObject *texts)
{
    orvane::drawWithTheProcessor();
    return new orvane::QuickWindows(desk, texts);
}
