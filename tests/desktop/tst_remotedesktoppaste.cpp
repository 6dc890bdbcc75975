#include "base/StandardFolders.h"
#include "desktop/wayland/RemoteDesktopPaste.h"
#include "tests/support/FakePortal.h"
#include "tests/support/Files.h"
#include "tests/support/Rows.h"
#include "tests/support/SessionBus.h"
#include "tests/support/TaskResult.h"

#include <QCoreApplication>
#include <QElapsedTimer>

using namespace Qt::StringLiterals;
using namespace orvane;
using namespace orvane::test;

using User = FakePortal::User;

namespace {

const QStringList pasteKeys = {u"42+"_s, u"110+"_s, u"110-"_s, u"42-"_s};

QString tokenFile()
{
    return StandardFolders::ofUser().orvane() + u"/paste-permission"_s;
}

} // namespace

/// The portal stands in for that of a desktop whose dialogs only a user can answer.
class TestRemoteDesktopPaste : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        QVERIFY(QDir().mkpath(StandardFolders::ofUser().orvane()));
        QFile::remove(tokenFile());
        m_portal = std::make_unique<FakePortal>();
    }
    void cleanup() { m_portal.reset(); }

    void allowedOnceForAll()
    {
        QVERIFY(!RemoteDesktopPaste::isAllowed());
        const auto consent = finished(RemoteDesktopPaste::askConsent());
        QVERIFY2(consent.succeeded(), qPrintable(consent.error()));
        QVERIFY(RemoteDesktopPaste::isAllowed());
        QVERIFY(m_portal->pressedKeys.isEmpty());
        QCOMPARE(QFile::permissions(tokenFile()) & (QFile::ReadGroup | QFile::ReadOther),
                 QFile::Permissions());

        m_portal->user = User::Refuses; // whom nobody asks any more
        QVERIFY(finished(RemoteDesktopPaste::press()).value());
        QCOMPARE(m_portal->pressedKeys, pasteKeys);
        QVERIFY(finished(RemoteDesktopPaste::press()).value()); // a token is good for once
        QCOMPARE(m_portal->pressedKeys, pasteKeys + pasteKeys);
    }

    void notAllowed_data()
    {
        const Rows<User, uint, QString> row("user", "version", "problem");
        row("refused", User::Refuses, 2, u"Вставка не разрешена"_s);
        row("a portal that remembers nothing", User::Agrees, 1,
            u"Рабочий стол не даёт программам нажимать клавиши"_s);
    }

    void notAllowed()
    {
        QFETCH(const User, user);
        QFETCH(const uint, version);
        QFETCH(const QString, problem);
        m_portal->user = user;
        m_portal->remoteDesktopVersion = version;
        const auto consent = finished(RemoteDesktopPaste::askConsent());
        QVERIFY2(consent.error().startsWith(problem), qPrintable(consent.error()));
        QVERIFY(!RemoteDesktopPaste::isAllowed());
        QVERIFY(!finished(RemoteDesktopPaste::press()).value());
        QCOMPARE(m_portal->pressedKeys, QStringList());
    }

    /// A portal that does not answer asks the user in the middle of a dictation, or is only slow.
    void doesNotOpen_data()
    {
        const Rows<User, bool> row("user", "isStillAllowed");
        row("revoked", User::Refuses, false);
        row("no answer", User::IsSilent, true);
    }

    void doesNotOpen()
    {
        QFETCH(const User, user);
        put(tokenFile(), "of an earlier run");
        m_portal->user = user;
        QElapsedTimer elapsed;
        elapsed.start();
        QVERIFY(!finished(RemoteDesktopPaste::press()).value());
        QVERIFY2(elapsed.elapsed() < 5000, QByteArray::number(elapsed.elapsed()).constData());
        QCOMPARE(m_portal->pressedKeys, QStringList());
        QTEST(RemoteDesktopPaste::isAllowed(), "isStillAllowed");
    }

    void portalThatIsGone()
    {
        put(tokenFile(), "good");
        m_portal.reset();
        QVERIFY(!finished(RemoteDesktopPaste::press()).value());
        QVERIFY(RemoteDesktopPaste::isAllowed()); // it may come back
    }

private:
    std::unique_ptr<FakePortal> m_portal;
};

int main(int argc, char **argv)
{
    const SessionBus bus;
    qputenv("DBUS_SESSION_BUS_ADDRESS", bus.address().toUtf8());
    QCoreApplication application(argc, argv);
    TestRemoteDesktopPaste test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_remotedesktoppaste.moc"
