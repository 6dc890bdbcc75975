#include "base/localization/Localization.h"
#include "tests/support/Rows.h"

#include <atomic>
#include <thread>

using namespace Qt::StringLiterals;
using namespace orvane;
using namespace orvane::test;

class TestLocalization : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { Localization::setLanguage(u"ru"_s); }

    void shows_data()
    {
        const Rows<QString, QString> row("language", "shown");
        row("Russian", u"ru"_s, u"Автоопределение"_s);
        row("English", u"en"_s, u"Auto-detect"_s);
        row("other case", u"EN"_s, u"Автоопределение"_s);
        row("with region", u"en_US"_s, u"Автоопределение"_s);
    }

    void shows()
    {
        QFETCH(const QString, language);
        Localization::setLanguage(language);
        QTEST(Localization::text(u"Автоопределение"), "shown");
    }

    void canBeReadWhileTheLanguageChanges()
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
};

QTEST_GUILESS_MAIN(TestLocalization)
#include "tst_localization.moc"
