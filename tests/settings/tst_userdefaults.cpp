#include "settings/UserDefaults.h"
#include "tests/support/Files.h"
#include "tests/support/Rows.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QSignalSpy>
#include <QTemporaryDir>

#include <sys/stat.h>

using namespace Qt::StringLiterals;
using namespace orvane;
using namespace orvane::test;

class TestUserDefaults : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }

    void keepsTypes_data()
    {
        const Rows<QVariant> row("value");
        row("true", QVariant(true));
        row("text", QVariant(u"true"_s));
        row("empty text", QVariant(QString()));
        row("whole number", QVariant(qlonglong(1) << 52));
        row("fraction", QVariant(0.1));
        row("date",
            QVariant(QDateTime(QDate(2026, 1, 2), QTime(3, 4, 5, 678), Qt::OffsetFromUTC, 10'800).toUTC()));
        row("list", QVariant(QVariantList{u"a"_s, false, 2LL}));
        row("nested", QVariant(QVariantMap{{u"a"_s, QVariantMap{{u"b"_s, u"c"_s}}}}));
    }

    void keepsTypes()
    {
        QFETCH(const QVariant, value);
        UserDefaults(file()).set(u"key"_s, value);
        const UserDefaults again(file());
        QCOMPARE(again.value(u"key"_s).typeId(), value.typeId());
        QCOMPARE(again.value(u"key"_s), value);
    }

    void typedAccess()
    {
        put(R"({"text": "true", "flag": true, "date": {"$date": "2026-01-02T03:04:05.678Z"}, "bad": {"$date": "x"}})");
        UserDefaults defaults(file());
        QCOMPARE(defaults.boolean(u"flag"_s), true);
        QVERIFY(!defaults.boolean(u"text"_s) && !defaults.string(u"flag"_s) && !defaults.string(u"absent"_s));
        QCOMPARE(defaults.date(u"date"_s)->toMSecsSinceEpoch(), 1'767'323'045'678);
        QVERIFY(!defaults.date(u"bad"_s) && defaults.contains(u"bad"_s));
        defaults.remove(u"text"_s);
        QVERIFY(!defaults.contains(u"text"_s));
        defaults.flush();
        QVERIFY(!UserDefaults(file()).contains(u"text"_s));
    }

    void formOnDisk()
    {
        {
            UserDefaults defaults(file());
            defaults.set(u"b"_s, u"Ы"_s);
            defaults.set(u"a"_s, 1);
        }
        QCOMPARE(content(), QByteArray("{\n    \"a\": 1,\n    \"b\": \"Ы\"\n}\n"));
        struct stat information{};
        QCOMPARE(::stat(QFile::encodeName(file()).constData(), &information), 0);
        QCOMPARE(information.st_mode & 0777U, 0600U);
    }

    void writesTheChangesOfAMomentTogether()
    {
        UserDefaults defaults(file());
        defaults.set(u"first"_s, 1);
        defaults.set(u"second"_s, 1);
        QCOMPARE(content(), QByteArray()); // nobody waits for the disk
        QTRY_VERIFY(content().contains("first"));
        QVERIFY(content().contains("second"));
        defaults.set(u"first"_s, 2);
        QTRY_VERIFY(content().contains("2"));
    }

    void keepsWhatOthersChanged()
    {
        put(R"({"removed": 1, "shared": 1})");
        UserDefaults one(file());
        UserDefaults other(file());
        one.set(u"one"_s, true);
        one.remove(u"removed"_s);
        one.set(u"shared"_s, u"earlier"_s);
        one.flush();
        other.set(u"other"_s, true);
        other.set(u"shared"_s, u"later"_s);
        other.flush();
        QCOMPARE(QJsonDocument::fromJson(content()).object(),
                 (QJsonObject{{u"one"_s, true}, {u"other"_s, true}, {u"shared"_s, u"later"_s}}));
        QVERIFY(other.contains(u"one"_s));

        for (int number = 0; number < 50; ++number) { // each on its own thread
            one.set(u"a%1"_s.arg(number), number);
            other.set(u"b%1"_s.arg(number), number);
            QCoreApplication::processEvents();
        }
        one.flush();
        other.flush();
        QCOMPARE(QJsonDocument::fromJson(content()).object().size(), 103);
    }

    void setsDamagedFilesAside_data()
    {
        const Rows<QByteArray> row("damaged");
        row("empty", QByteArray());
        row("cut off", QByteArray("{\"a\": 1"));
        row("list", "[1]");
        row("too large", "{\"a\": \"" + QByteArray(5'000'000, 'x') + "\"}");
    }

    void setsDamagedFilesAside()
    {
        QFETCH(const QByteArray, damaged);
        put(damaged);
        {
            UserDefaults defaults(file());
            QVERIFY(!defaults.contains(u"a"_s));
            QCOMPARE(content(), damaged); // who only reads changes nothing
            defaults.set(u"b"_s, 1);
        }
        QCOMPARE(content(u".damaged"_s), damaged);
        put("again");
        UserDefaults(file()).set(u"b"_s, 2);
        QCOMPARE(content(u".damaged"_s), damaged);
        QCOMPARE(content(u".damaged-2"_s), "again");
        QCOMPARE(UserDefaults(file()).value(u"b"_s), QVariant(2LL));
    }

    void saysWhatCannotBeStored()
    {
        test::put(m_folder->filePath(u"Orvane"_s), {}); // where the folder should be
        UserDefaults defaults(file());
        const QSignalSpy reported(&defaults, &UserDefaults::errorChanged);
        defaults.set(u"first"_s, true);
        QTRY_COMPARE(reported.size(), 1);
        QVERIFY(defaults.error().startsWith(u"Не удалось "_s));
        QCOMPARE(defaults.boolean(u"first"_s), true);

        QVERIFY(QFile::remove(m_folder->filePath(u"Orvane"_s)));
        defaults.set(u"second"_s, true);
        QTRY_COMPARE(reported.size(), 2);
        QCOMPARE(defaults.error(), QString());
        const UserDefaults again(file());
        QVERIFY(again.contains(u"first"_s) && again.contains(u"second"_s));
    }

private:
    [[nodiscard]] QString file() const { return m_folder->filePath(u"Orvane/settings.json"_s); }

    [[nodiscard]] QByteArray content(const QString &suffix = {}) const
    {
        return test::contentOf(file() + suffix);
    }

    void put(const QByteArray &json) const { test::put(file(), json); }

    std::unique_ptr<QTemporaryDir> m_folder;
};

QTEST_GUILESS_MAIN(TestUserDefaults)
#include "tst_userdefaults.moc"
