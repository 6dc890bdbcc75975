#include "desktop/KeyTap.h"
#include "desktop/TextInjector.h"
#include "tests/support/TaskResult.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QTest>

using namespace orvane;
using namespace Qt::StringLiterals;

/// A display that lets no program hear or press the keys of others.
class TestWithoutGlobalKeys : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void tapNeverBecomesActive();
    void textIsLeftOnTheClipboard();
};

void TestWithoutGlobalKeys::tapNeverBecomesActive()
{
    const std::unique_ptr<KeyTap> tap = KeyTap::forDisplay();
    tap->install();
    tap->setEscapeIntercepted(true);
    QTest::qWait(100);
    QVERIFY(!tap->isActive());
    QVERIFY(!tap->grabIsMissing());
    tap->uninstall();
}

void TestWithoutGlobalKeys::textIsLeftOnTheClipboard()
{
    const TaskResult insertion(TextInjector::forDisplay()->insert(u" записка\n"_s));
    QTRY_VERIFY(insertion.isDone());
    QCOMPARE(insertion.value(), TextInjector::Outcome::LeftOnClipboard);
    QCOMPARE(QGuiApplication::clipboard()->text(), u"записка"_s);
}

QTEST_MAIN(TestWithoutGlobalKeys)
#include "tst_withoutglobalkeys.moc"
