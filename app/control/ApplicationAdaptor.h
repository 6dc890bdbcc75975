#pragma once

#include <QDBusAbstractAdaptor>
#include <QStringList>
#include <QVariantMap>

namespace orvane {

/// The desktop's own interface to a program of which one instance runs.
class ApplicationAdaptor : public QDBusAbstractAdaptor
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

public:
    explicit ApplicationAdaptor(QObject *service) : QDBusAbstractAdaptor(service) {}

public Q_SLOTS:
    void Activate(const QVariantMap &platform) { Q_EMIT activated({}, tokenOf(platform)); }
    void Open(const QStringList &addresses, const QVariantMap &platform)
    {
        Q_EMIT activated(addresses, tokenOf(platform));
    }
    void ActivateAction(const QString &name, const QVariantList & /*parameters*/, const QVariantMap &platform)
    {
        Q_EMIT actionActivated(name, tokenOf(platform));
    }

Q_SIGNALS:
    void activated(const QStringList &addresses, const QString &token);
    void actionActivated(const QString &name, const QString &token);

private:
    static QString tokenOf(const QVariantMap &platform)
    {
        return platform.value(QStringLiteral("activation-token")).toString();
    }
};

} // namespace orvane
