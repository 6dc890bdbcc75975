#include "app/AppDelegate.h"
#include "app/SingleInstance.h"
#include "app/control/ControlInterface.h"
#include "app/control/ControlService.h"
#include "base/Async.h"
#include "desktop/KeyTap.h"
#include "desktop/SessionLock.h"
#include "tests/support/FakeFileChooser.h"
#include "tests/support/Rows.h"
#include "tests/support/ServicesHome.h"
#include "tests/support/SessionBus.h"

#include <QApplication>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDBusPendingCallWatcher>
#include <QSignalSpy>

using namespace Qt::StringLiterals;
using namespace orvane;
using namespace orvane::test;

namespace {

class FakeKeys : public KeyTap
{
public:
    [[nodiscard]] bool isActive() const override { return true; }
    [[nodiscard]] bool has(TriggerKey /*key*/) const override { return true; }
    [[nodiscard]] bool rightOptionTypes() const override { return true; }

    void pressTwice(TriggerKey key)
    {
        for (int i = 0; i < 2; ++i) {
            Q_EMIT triggerKeyChanged(key, true);
            Q_EMIT triggerKeyChanged(key, false);
        }
    }
};

class FakeLock : public SessionLock
{
public:
    [[nodiscard]] bool isLocked() const override { return locked; }

    bool locked = false;
};

} // namespace

/// The application's life, on a session bus of its own, without a model: what begins a dictation says so.
class TestAppDelegate : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_home = std::make_unique<ServicesHome>();
        m_lock.locked = false;
        m_control = std::make_unique<ControlService>();
        m_control->publish();
    }

    void cleanup()
    {
        m_delegate.reset();
        m_services.reset();
        m_control.reset();
        endAbandonedTasks();
    }

    void keysBeginADictation()
    {
        launch();
        m_keys.pressTwice(TriggerKey::RightOption); // not the one that counts
        QCOMPARE(m_home->guidance.titles, QStringList());
        m_keys.pressTwice(TriggerKey::RightCommand);
        QCOMPARE(m_home->guidance.titles, QStringList{u"Нет модели"_s});
    }

    void lockedSessionIsDeaf()
    {
        launch();
        m_lock.locked = true;
        m_keys.pressTwice(TriggerKey::RightCommand);
        Q_EMIT m_keys.togglePressed();
        QCOMPARE(m_home->guidance.titles, QStringList());
        m_lock.locked = false;
        Q_EMIT m_keys.togglePressed();
        QCOMPARE(m_home->guidance.titles.size(), 1);
    }

    void typingWithAltGr()
    {
        launch();
        m_services->settings().setDictationTrigger(TriggerKey::RightOption);
        for (int letter = 0; letter < 2; ++letter) {
            Q_EMIT m_keys.triggerKeyChanged(TriggerKey::RightOption, true);
            Q_EMIT m_keys.otherKeyPressed();
            Q_EMIT m_keys.triggerKeyChanged(TriggerKey::RightOption, false);
        }
        QCOMPARE(m_home->guidance.titles, QStringList());
        m_keys.pressTwice(TriggerKey::RightOption);
        QCOMPARE(m_home->guidance.titles.size(), 1);
    }

    void requestThatCameTooEarly()
    {
        const QDBusPendingCallWatcher answer(ask(u"Status"_s));
        launch();
        QTRY_VERIFY(answer.isFinished());
        QVERIFY2(!answer.isError(), qPrintable(answer.error().message()));
        QCOMPARE(answer.reply().arguments().value(0).toString(), u"idle"_s);
    }

    void nothingThatDidNotBeginIsReportedAsBegun_data()
    {
        const Rows<QString> row("method");
        for (const char *method : {"Start", "Toggle", "StartMeeting", "TranscribeMeeting", "DismissMeeting"})
            row(method, QString::fromLatin1(method));
    }

    void nothingThatDidNotBeginIsReportedAsBegun()
    {
        QFETCH(const QString, method);
        launch();
        const QDBusPendingCallWatcher answer(ask(method));
        QTRY_VERIFY(answer.isFinished());
        QCOMPARE(answer.error().name(), ControlInterface::refusal);
        QVERIFY(!answer.error().message().isEmpty());
    }

    void sessionEndsTheProgramInOrder()
    {
        launch();
        QSignalSpy quitting(m_delegate.get(), &AppDelegate::quitting);
        QEvent order(QEvent::Quit);
        QCoreApplication::sendEvent(qApp, &order);
        QCOMPARE(quitting.size(), 0); // nobody means it while the session is being restored
        QTRY_COMPARE_WITH_TIMEOUT((QCoreApplication::sendEvent(qApp, &order), quitting.size()), 1, 20'000);
        QVERIFY(!order.isAccepted()); // not before a recording would be complete
    }

    void secondApplicationOnTheSameData()
    {
        const QString data = m_home->path(u"Orvane"_s);
        const QDBusConnectionInterface &bus = *QDBusConnection::sessionBus().interface();
        SingleInstance first;
        QCOMPARE(first.claim(data), SingleInstance::Claim::First);
        QVERIFY(bus.isServiceRegistered(ControlInterface::service));
        QVERIFY(!FileLock::tryLock(data + u"/application.lock"_s));

        first.giveUpName(); // it ends
        QVERIFY(!bus.isServiceRegistered(ControlInterface::service));
        QVERIFY(!FileLock::tryLock(data + u"/application.lock"_s));
    }

private:
    void launch()
    {
        AppServices::Environment environment = m_home->onDesktop();
        environment.role = AppServices::Role::Application;
        m_services = std::make_unique<AppServices>(environment);
        m_delegate = std::make_unique<AppDelegate>(
            *m_services, *m_control,
            AppDelegate::Desktop{
                .guidance = m_home->guidance, .keys = m_keys, .lock = m_lock, .files = m_files});
        m_delegate->applicationDidFinishLaunching();
    }

    [[nodiscard]] static QDBusPendingCall ask(const QString &method)
    {
        // A connection of its own, as another program has.
        const QDBusConnection other =
            QDBusConnection::connectToBus(qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS"), u"another"_s);
        const QDBusPendingCall call = other.asyncCall(
            QDBusMessage::createMethodCall(QDBusConnection::sessionBus().baseService(),
                                           ControlInterface::path, ControlInterface::interface, method));
        (void)other.interface()->isServiceRegistered(u"any"_s); // answered when the call has been passed on
        return call;
    }

    std::unique_ptr<ServicesHome> m_home;
    FakeKeys m_keys;
    FakeLock m_lock;
    FakeFileChooser m_files;
    std::unique_ptr<ControlService> m_control;
    std::unique_ptr<AppServices> m_services;
    std::unique_ptr<AppDelegate> m_delegate;
};

int main(int argc, char **argv)
{
    const SessionBus bus;
    qputenv("DBUS_SESSION_BUS_ADDRESS", bus.address().toLocal8Bit());
    const QApplication application(argc, argv);
    TestAppDelegate test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_appdelegate.moc"
