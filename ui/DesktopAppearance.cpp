#include "ui/DesktopAppearance.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QEvent>
#include <QGuiApplication>
#include <QPalette>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

constexpr auto service = "org.freedesktop.portal.Desktop"_L1;
constexpr auto path = "/org/freedesktop/portal/desktop"_L1;
constexpr auto interface = "org.freedesktop.portal.Settings"_L1;

constexpr auto appearance = "org.freedesktop.appearance"_L1;
constexpr auto colourScheme = "color-scheme"_L1;
// The desktop's own, which the portal passes on: there is no common setting for motion.
constexpr auto desktopInterface = "org.gnome.desktop.interface"_L1;
constexpr auto animations = "enable-animations"_L1;

/// What an answer holds, however deeply it is wrapped.
QVariant unwrapped(QVariant value)
{
    while (value.canConvert<QDBusVariant>())
        value = value.value<QDBusVariant>().variant();
    return value;
}

} // namespace

DesktopAppearance::DesktopAppearance(QObject *parent) : QObject(parent)
{
    QGuiApplication::instance()->installEventFilter(this);
    QDBusConnection::sessionBus().connect(service, path, interface, u"SettingChanged"_s, this,
                                          SLOT(settingChanged(QString, QString, QDBusVariant)));
    ask(appearance, colourScheme);
    ask(desktopInterface, animations);
}

bool DesktopAppearance::isDark() const
{
    const QPalette palette = QGuiApplication::palette();
    return m_isDark.value_or(palette.color(QPalette::Window).lightness() <
                             palette.color(QPalette::WindowText).lightness());
}

bool DesktopAppearance::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::ApplicationPaletteChange && watched == QGuiApplication::instance())
        Q_EMIT changed();
    return QObject::eventFilter(watched, event);
}

void DesktopAppearance::settingChanged(const QString &area, const QString &key, const QDBusVariant &value)
{
    take(area, key, unwrapped(value.variant()));
}

void DesktopAppearance::ask(const QString &area, const QString &key)
{
    QDBusMessage question = QDBusMessage::createMethodCall(service, path, interface, u"Read"_s);
    question << area << key;
    const auto *answer = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(question), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this,
            [this, area, key](QDBusPendingCallWatcher *finished) {
                const QDBusPendingReply<QDBusVariant> reply = *finished;
                if (!reply.isError())
                    take(area, key, unwrapped(reply.value().variant()));
                finished->deleteLater();
            });
}

void DesktopAppearance::take(const QString &area, const QString &key, const QVariant &value)
{
    if (area == appearance && key == colourScheme) {
        // 0: no preference, 1: dark, 2: light
        const uint scheme = value.toUInt();
        m_isDark = scheme == 1 || scheme == 2 ? std::optional(scheme == 1) : std::nullopt;
    } else if (area == desktopInterface && key == animations) {
        m_isAnimated = value.toBool();
    } else {
        return;
    }
    Q_EMIT changed();
}

} // namespace orvane
