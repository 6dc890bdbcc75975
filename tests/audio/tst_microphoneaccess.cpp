#include "audio/MicrophoneAccess.h"
#include "tests/support/SessionBus.h"
#include "tests/support/TaskResult.h"

#include <QDBusConnection>
#include <QDBusContext>
#include <QElapsedTimer>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace orvane;

namespace {

constexpr int patience = 20'000; // ms, on a busy machine

} // namespace

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

    void asksTheUsersDecision_data();
    void asksTheUsersDecision();
    void waitsForNoPortal();
};

void TestMicrophoneAccess::asksTheUsersDecision_data()
{
    QTest::addColumn<QString>("sandbox");
    QTest::addColumn<QStringList>("permissions");
    QTest::addColumn<bool>("isGranted");
    QTest::newRow("refused") << u"app.sandboxed"_s << QStringList{u"no"_s} << false;
    QTest::newRow("granted") << u"app.sandboxed"_s << QStringList{u"yes"_s} << true;
    QTest::newRow("undecided") << u"app.sandboxed"_s << QStringList() << true;
    QTest::newRow("no sandbox") << QString() << QStringList{u"no"_s} << true;
}

void TestMicrophoneAccess::asksTheUsersDecision()
{
    QFETCH(const QString, sandbox);
    QFETCH(const QStringList, permissions);
    QFETCH(const bool, isGranted);
    qputenv("FLATPAK_ID", sandbox.toUtf8());
    m_store.permissions = permissions;
    const TaskResult asked(requestMicrophone());
    QTRY_VERIFY_WITH_TIMEOUT(asked.succeeded(), patience);
    QCOMPARE(asked.value(), isGranted);
}

void TestMicrophoneAccess::waitsForNoPortal()
{
    qputenv("FLATPAK_ID", "app.sandboxed");
    m_store.isSilent = true;
    QElapsedTimer timer;
    timer.start();
    const TaskResult asked(requestMicrophone());
    QTRY_VERIFY_WITH_TIMEOUT(asked.succeeded(), patience);
    QVERIFY(asked.value());
    QVERIFY2(timer.elapsed() < 5000, qPrintable(QString::number(timer.elapsed())));
}

QTEST_GUILESS_MAIN(TestMicrophoneAccess)
#include "tst_microphoneaccess.moc"
