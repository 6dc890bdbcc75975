#include "desktop/Autostart.h"
#include "tests/support/Files.h"

#include <QDir>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace orvane;
using orvane::test::contentOf;
using orvane::test::put;

class TestAutostart : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void isStoredAsTheDesktopReadsIt_data()
    {
        QTest::addColumn<QString>("program");
        QTest::addColumn<QByteArray>("line");
        QTest::newRow("plain") << u"/usr/bin/orvane"_s
                               << QByteArray(R"(Exec="/usr/bin/orvane" --background)");
        QTest::newRow("signs of the command line")
            << u"/opt/a b/50% $5 \"x\"/c\\d"_s
            << QByteArray(R"(Exec="/opt/a b/50%% \\$5 \\"x\\"/c\\\\d" --background)");
    }

    void isStoredAsTheDesktopReadsIt()
    {
        QFETCH(const QString, program);
        QFETCH(const QByteArray, line);
        const QTemporaryDir config;
        const QString file = config.filePath(u"autostart/orvane.desktop"_s);
        {
            Autostart autostart(file, program);
            autostart.set(true);
            QVERIFY(autostart.isOn());
        }
        QVERIFY(contentOf(file).startsWith("[Desktop Entry]\n"));
        QVERIFY2(contentOf(file).split('\n').contains(line), contentOf(file).constData());

        Autostart again(file, program);
        QTRY_VERIFY(again.isOn());
        again.set(false);
        QTRY_VERIFY(!QFile::exists(file));
    }

    void sawWhatTheDesktopSays_data()
    {
        QTest::addColumn<QByteArray>("entry");
        QTest::addColumn<bool>("isOn");
        QTest::newRow("another's") << QByteArray("[Desktop Entry]\nExec=orvane\n") << true;
        QTest::newRow("hidden") << QByteArray("[Desktop Entry]\nHidden = true\n") << false;
        QTest::newRow("switched off") << QByteArray("X-GNOME-Autostart-enabled=false") << false;
    }

    void sawWhatTheDesktopSays()
    {
        QFETCH(const QByteArray, entry);
        QFETCH(const bool, isOn);
        const QTemporaryDir config;
        const QString file = config.filePath(u"orvane.desktop"_s);
        put(file, entry);
        Autostart autostart(file, u"/usr/bin/orvane"_s);
        QTest::qWait(50);
        QCOMPARE(autostart.isOn(), isOn);

        put(file, "Hidden=true");
        autostart.look();
        autostart.set(!isOn); // what was read before does not count
        QTest::qWait(50);
        QCOMPARE(autostart.isOn(), !isOn);
    }

    void saysWhatItCannotStore()
    {
        const QTemporaryDir config;
        put(config.filePath(u"autostart"_s), "a file in the folder's place");
        Autostart autostart(config.filePath(u"autostart/orvane.desktop"_s), u"/usr/bin/orvane"_s);
        autostart.set(true);
        QTRY_VERIFY(!autostart.isOn());
        QVERIFY2(autostart.error().startsWith(u"Не удалось записать файл «orvane.desktop»: "_s),
                 qPrintable(autostart.error()));
    }
};

QTEST_GUILESS_MAIN(TestAutostart)
#include "tst_autostart.moc"
