#include "audio/MicrophoneAccess.h"
#include "tests/support/Rows.h"
#include "tests/support/SessionBus.h"
#include "tests/support/TaskResult.h"

#include <QDBusConnection>
#include <QDBusContext>
#include <QElapsedTimer>

using namespace Qt::StringLiterals;
using namespace orvane;
using namespace orvane::test;

/// Where the portals keep what the user has decided.
class PermissionStore : public QObject, protected QDBusContext
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.impl.portal.PermissionStore")

public:
    QStringList permissions;
    bool isSilent = false;

public Q_SLOTS:
    QStringList GetPermission(const QString &table, const QString &id, const QString &program) // NOLINT
    {
        if (isSilent)
            setDelayedReply(true);
        const bool isAsked = table == u"devices" && id == u"microphone" && program == u"app.sandboxed";
        return isAsked ? permissions : QStringList();
    }
};

class TestMicrophoneAccess : public QObject
{
    Q_OBJECT

    test::SessionBus m_bus;
    PermissionStore m_store;

private Q_SLOTS:
    void initTestCase()
    {
        qputenv("DBUS_SESSION_BUS_ADDRESS", m_bus.address().toUtf8());
        QDBusConnection portals = QDBusConnection::connectToBus(m_bus.address(), u"portals"_s);
        QVERIFY(portals.registerObject(u"/org/freedesktop/impl/portal/PermissionStore"_s, &m_store,
                                       QDBusConnection::ExportAllSlots));
        QVERIFY(portals.registerService(u"org.freedesktop.impl.portal.PermissionStore"_s));
    }

    void asksTheUsersDecision_data()
    {
        const Rows<QString, QStringList, bool, bool> row("sandbox", "permissions", "isSilent", "isGranted");
        row("refused", u"app.sandboxed"_s, {u"no"_s}, false, false);
        row("granted", u"app.sandboxed"_s, {u"yes"_s}, false, true);
        row("undecided", u"app.sandboxed"_s, {}, false, true);
        row("no answer", u"app.sandboxed"_s, {u"no"_s}, true, true);
        row("no sandbox", {}, {u"no"_s}, false, true);
    }

    void asksTheUsersDecision()
    {
        QFETCH(const QString, sandbox);
        QFETCH(const QStringList, permissions);
        QFETCH(const bool, isSilent);
        QFETCH(const bool, isGranted);
        qputenv("FLATPAK_ID", sandbox.toUtf8());
        m_store.permissions = permissions;
        m_store.isSilent = isSilent;
        QElapsedTimer timer;
        timer.start();
        const TaskResult asked(requestMicrophone());
        QTRY_VERIFY_WITH_TIMEOUT(asked.succeeded(), 20'000); // on a busy machine
        QCOMPARE(asked.value(), isGranted);
        QVERIFY2(timer.elapsed() < 5000, qPrintable(QString::number(timer.elapsed())));
    }
};

QTEST_GUILESS_MAIN(TestMicrophoneAccess)
#include "tst_microphoneaccess.moc"
