#include "base/localization/Localization.h"

#include <QTest>

#include <atomic>
#include <thread>

using namespace Qt::StringLiterals;
using namespace orvane;

class TestLocalization : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { Localization::setLanguage(u"ru"_s); }

    void shows_data();
    void shows();
    void canBeReadWhileTheLanguageChanges();
};

void TestLocalization::shows_data()
{
    QTest::addColumn<QString>("language");
    QTest::addColumn<QString>("shown");
    QTest::newRow("Russian") << u"ru"_s << u"Автоопределение"_s;
    QTest::newRow("English") << u"en"_s << u"Auto-detect"_s;
    QTest::newRow("other case") << u"EN"_s << u"Автоопределение"_s;
    QTest::newRow("with region") << u"en_US"_s << u"Автоопределение"_s;
}

void TestLocalization::shows()
{
    QFETCH(const QString, language);
    Localization::setLanguage(language);
    QTEST(Localization::text(u"Автоопределение"), "shown");
}

void TestLocalization::canBeReadWhileTheLanguageChanges()
{
    std::atomic<int> strange = 0;
    std::jthread reader([&strange](const std::stop_token &stop) {
        while (!stop.stop_requested()) {
            const QString shown = Localization::text(u"Автоопределение");
            strange += shown != u"Автоопределение"_s && shown != u"Auto-detect"_s;
        }
    });
    for (int count = 0; count < 2000; ++count)
        Localization::setLanguage(count % 2 ? u"en"_s : u"ru"_s);
    reader = {};
    QCOMPARE(strange, 0);
}

QTEST_GUILESS_MAIN(TestLocalization)
#include "tst_localization.moc"
