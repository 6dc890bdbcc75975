#include "settings/UserDefaults.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <array>
#include <csignal>
#include <sys/resource.h>

using namespace Qt::StringLiterals;
using namespace orvane;

namespace {

constexpr int writesPerChild = 100;
constexpr int keysPerChild = 3;

// The test starts itself with these to be another process at the same file.
namespace Child {

// The file keeps its size, so that only its time tells that another process wrote it. Exit code 0 when
// every earlier value is still there at each write.
int writeMany(const QString &file, const QString &key)
{
    UserDefaults defaults(file);
    std::array<int, keysPerChild> written{};
    for (int number = 0; number < writesPerChild; ++number) {
        const int current = number % keysPerChild;
        written[size_t(current)] = 1000 + number;
        defaults.set(u"%1-%2"_s.arg(key).arg(current), written[size_t(current)]);
        for (int earlier = 0; earlier < keysPerChild; ++earlier) {
            if (defaults.value(u"%1-%2"_s.arg(key).arg(earlier)).toInt() != written[size_t(earlier)])
                return 1;
        }
    }
    return 0;
}

int writeOne(const QString &file, const QString &key)
{
    UserDefaults(file).set(key, u"from the other process"_s);
    return 0;
}

// Exit code 0 when the program goes on with what could not be stored.
int writeToFullDisk(const QString &file, rlim_t limit)
{
    UserDefaults defaults(file);
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit limits{.rlim_cur = limit, .rlim_max = RLIM_INFINITY};
    setrlimit(RLIMIT_FSIZE, &limits);
    defaults.set(u"kept"_s, u"changed"_s);
    defaults.set(u"large"_s, QString(100'000, u'x'));
    if (defaults.string(u"kept"_s) != u"changed"_s || !defaults.contains(u"large"_s))
        return 1;

    QFile onDisk(file);
    if (!onDisk.open(QFile::ReadOnly) || onDisk.readAll() != "{\"kept\": \"whole\"}")
        return 2;

    const rlimit none{.rlim_cur = RLIM_INFINITY, .rlim_max = RLIM_INFINITY};
    setrlimit(RLIMIT_FSIZE, &none);
    defaults.set(u"after"_s, true);
    return 0;
}

int run(const QStringList &arguments)
{
    const QString &what = arguments[1];
    const QString &file = arguments[2];
    if (what == u"--write-many"_s)
        return writeMany(file, arguments[3]);
    if (what == u"--write-one"_s)
        return writeOne(file, arguments[3]);
    return writeToFullDisk(file, arguments[3].toULongLong());
}

} // namespace Child

std::unique_ptr<QProcess> startChild(const QStringList &arguments)
{
    auto child = std::make_unique<QProcess>();
    child->setProcessChannelMode(QProcess::ForwardedChannels);
    child->start(QCoreApplication::applicationFilePath(), arguments);
    return child;
}

int exitCodeOf(QProcess &child)
{
    if (!child.waitForFinished(60'000) || child.exitStatus() != QProcess::NormalExit)
        return -1;
    return child.exitCode();
}

} // namespace

class TestUserDefaults : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }

    void keepsTypes_data();
    void keepsTypes();
    void formOnDisk();
    void readsFormOfOthers();
    void typedAccess();
    void removed();
    void otherProcessesKeysAreKept();
    void processesWriteAtOnce();
    void damagedFileIsSetAside_data();
    void damagedFileIsSetAside();
    void damagedWhileRunning();
    void earlierDamagedFilesStay();
    void emptyFileIsNoDamage();
    void fullDisk_data();
    void fullDisk();
    void unwritableFolder();
    void standardFile();

private:
    [[nodiscard]] QString file() const { return m_folder->filePath(u"Orvane/settings.json"_s); }
    void put(const QByteArray &content) const;
    [[nodiscard]] QByteArray content() const;
    [[nodiscard]] QStringList files() const;

    std::unique_ptr<QTemporaryDir> m_folder;
};

void TestUserDefaults::put(const QByteArray &content) const
{
    QVERIFY(QDir().mkpath(m_folder->filePath(u"Orvane"_s)));
    QFile created(file());
    QVERIFY(created.open(QFile::WriteOnly));
    created.write(content);
}

QByteArray TestUserDefaults::content() const
{
    QFile read(file());
    return read.open(QFile::ReadOnly) ? read.readAll() : QByteArray();
}

QStringList TestUserDefaults::files() const
{
    return QDir(m_folder->filePath(u"Orvane"_s)).entryList(QDir::Files | QDir::Hidden, QDir::Name);
}

void TestUserDefaults::keepsTypes_data()
{
    QTest::addColumn<QVariant>("value");
    const QDateTime moment(QDate(2031, 2, 28), QTime(23, 59, 58, 7), Qt::UTC);
    QTest::newRow("true") << QVariant(true);
    QTest::newRow("the text true") << QVariant(u"true"_s);
    QTest::newRow("empty text") << QVariant(u""_s);
    QTest::newRow("text with everything") << QVariant(u"«Ё» \"\\\n\t\u2028 🎙 %1 @Variant(x)"_s);
    QTest::newRow("whole number") << QVariant(Q_INT64_C(9007199254740993));
    QTest::newRow("fraction") << QVariant(-0.125);
    QTest::newRow("date") << QVariant(moment);
    QTest::newRow("date as text") << QVariant(u"2031-02-28T23:59:58Z"_s);
    QTest::newRow("list") << QVariant(QVariantList{true, u"a"_s, Q_INT64_C(1), moment, QVariantList{}});
    QTest::newRow("map") << QVariant(QVariantMap{{u"$date"_s, u"no date"_s}, {u"b"_s, QVariantList{moment}}});
}

void TestUserDefaults::keepsTypes()
{
    QFETCH(const QVariant, value);
    UserDefaults(file()).set(u"key"_s, value);

    // Under another name, so that nothing but the file carries it over.
    const QString copy = m_folder->filePath(u"copy.json"_s);
    QVERIFY(QFile::copy(file(), copy));
    const QVariant read = UserDefaults(copy).value(u"key"_s);
    QCOMPARE(read.typeId(), value.typeId());
    QCOMPARE(read, value);
}

void TestUserDefaults::formOnDisk()
{
    UserDefaults defaults(file());
    QVERIFY(!QFile::exists(file()));
    defaults.set(u"zulu"_s, true);
    defaults.set(u"alpha"_s, QDateTime(QDate(2024, 5, 1), QTime(10, 0), Qt::OffsetFromUTC, 3 * 3600));
    QCOMPARE(content(), "{\n"
                        "    \"alpha\": {\n"
                        "        \"$date\": \"2024-05-01T07:00:00.000Z\"\n"
                        "    },\n"
                        "    \"zulu\": true\n"
                        "}\n");
    QCOMPARE(files(), QStringList{u"settings.json"_s});
    const QFile::Permissions ownerOnly = QFile::ReadOwner | QFile::WriteOwner;
    QCOMPARE(QFile::permissions(file()) & ~(QFile::ReadUser | QFile::WriteUser), ownerOnly);

    QVERIFY(QFile::setPermissions(file(), ownerOnly | QFile::ReadGroup | QFile::ReadOther));
    defaults.set(u"zulu"_s, false);
    QCOMPARE(QFile::permissions(file()) & ~(QFile::ReadUser | QFile::WriteUser), ownerOnly);
}

void TestUserDefaults::readsFormOfOthers()
{
    put(R"({"when": {"$date": "2024-05-01T10:00:00+03:00"}, "unknown": {"deep": [1, {"x": null}]}, "a/b": 1})");
    UserDefaults defaults(file());
    QCOMPARE(defaults.date(u"when"_s), QDateTime(QDate(2024, 5, 1), QTime(7, 0), Qt::UTC));

    defaults.set(u"own"_s, 1);
    const QJsonObject kept = QJsonDocument::fromJson(content()).object();
    const QJsonObject unknown{{u"deep"_s, QJsonArray{1, QJsonObject{{u"x"_s, QJsonValue::Null}}}}};
    QCOMPARE(kept[u"unknown"_s], QJsonValue(unknown));
    QCOMPARE(kept[u"a/b"_s], QJsonValue(1));
}

void TestUserDefaults::typedAccess()
{
    UserDefaults defaults(file());
    defaults.set(u"flag"_s, u"true"_s);
    defaults.set(u"text"_s, true);
    defaults.set(u"date"_s, u"2024-05-01T07:00:00Z"_s);
    QCOMPARE(defaults.boolean(u"flag"_s), std::nullopt);
    QCOMPARE(defaults.string(u"text"_s), std::nullopt);
    QCOMPARE(defaults.date(u"date"_s), std::nullopt);
    QCOMPARE(defaults.boolean(u"text"_s), true);
    QCOMPARE(defaults.string(u"absent"_s), std::nullopt);
    QVERIFY(!defaults.value(u"absent"_s).isValid());
}

void TestUserDefaults::removed()
{
    UserDefaults defaults(file());
    defaults.set(u"gone"_s, 1);
    defaults.set(u"stays"_s, 2);
    defaults.remove(u"gone"_s);
    QVERIFY(!defaults.contains(u"gone"_s));
    QCOMPARE(QJsonDocument::fromJson(content()).object().keys(), QStringList{u"stays"_s});
}

void TestUserDefaults::otherProcessesKeysAreKept()
{
    UserDefaults defaults(file());
    defaults.set(u"mine"_s, true);
    const auto child = startChild({u"--write-one"_s, file(), u"theirs"_s});
    QCOMPARE(exitCodeOf(*child), 0);

    defaults.set(u"mine"_s, false);
    QCOMPARE(defaults.string(u"theirs"_s), u"from the other process"_s);
    const QJsonObject object = QJsonDocument::fromJson(content()).object();
    QCOMPARE(object[u"theirs"_s], QJsonValue(u"from the other process"_s));
    QCOMPARE(object[u"mine"_s], QJsonValue(false));
}

void TestUserDefaults::processesWriteAtOnce()
{
    std::vector<std::unique_ptr<QProcess>> children;
    for (const QString &key : {u"a"_s, u"b"_s, u"c"_s})
        children.push_back(startChild({u"--write-many"_s, file(), key}));
    for (const auto &child : children)
        QCOMPARE(exitCodeOf(*child), 0);
    const QJsonObject object = QJsonDocument::fromJson(content()).object();
    QCOMPARE(object.size(), 3 * keysPerChild);
    QCOMPARE(files(), QStringList{u"settings.json"_s});
}

void TestUserDefaults::damagedFileIsSetAside_data()
{
    QTest::addColumn<QByteArray>("damage");
    QTest::newRow("cut off") << QByteArray(R"({"selectedModelID": "ba)");
    QTest::newRow("list at the top") << QByteArray("[1, 2]");
    QTest::newRow("number at the top") << QByteArray("1");
    QTest::newRow("zeros") << QByteArray(4096, '\0');
    QTest::newRow("bytes") << QByteArray::fromHex("fffe00ff89504e470d0a1a0a");
    QTest::newRow("too deep") << QByteArray(100'000, '[');
    QTest::newRow("too large") << "{\"a\": \"" + QByteArray(8 * 1024 * 1024, 'x') + "\"}";
    QTest::newRow("only blanks") << QByteArray(" \n");
}

void TestUserDefaults::damagedFileIsSetAside()
{
    QFETCH(const QByteArray, damage);
    put(damage);
    UserDefaults defaults(file());
    QVERIFY(!defaults.contains(u"selectedModelID"_s));
    QCOMPARE(files(), QStringList{u"settings.json.damaged"_s});

    defaults.set(u"new"_s, true);
    QCOMPARE(QJsonDocument::fromJson(content()).object().keys(), QStringList{u"new"_s});
    QFile aside(file() + u".damaged"_s);
    QVERIFY(aside.open(QFile::ReadOnly));
    QVERIFY(aside.readAll() == damage);
}

void TestUserDefaults::damagedWhileRunning()
{
    UserDefaults defaults(file());
    defaults.set(u"before"_s, 1);
    put("{ damaged by hand");
    defaults.set(u"after"_s, 2);
    QCOMPARE(files(), (QStringList{u"settings.json"_s, u"settings.json.damaged"_s}));
    QVERIFY(QJsonDocument::fromJson(content()).object().contains(u"after"_s));
}

void TestUserDefaults::earlierDamagedFilesStay()
{
    for (const QByteArray &damage : {QByteArray("{first"), QByteArray("{second"), QByteArray("{third")}) {
        put(damage);
        const UserDefaults defaults(file());
    }
    QCOMPARE(files(), (QStringList{u"settings.json.damaged"_s, u"settings.json.damaged-2"_s,
                                   u"settings.json.damaged-3"_s}));
    QFile first(file() + u".damaged"_s);
    QVERIFY(first.open(QFile::ReadOnly));
    QCOMPARE(first.readAll(), "{first");
}

void TestUserDefaults::emptyFileIsNoDamage()
{
    put({});
    UserDefaults defaults(file());
    defaults.set(u"key"_s, 1);
    QCOMPARE(files(), QStringList{u"settings.json"_s});
}

void TestUserDefaults::fullDisk_data()
{
    QTest::addColumn<int>("room");
    QTest::newRow("no room at all") << 0;
    QTest::newRow("room for the small change only") << 20;
    QTest::newRow("room for the lock only") << 64;
}

void TestUserDefaults::fullDisk()
{
    QFETCH(const int, room);
    put(R"({"kept": "whole"})");
    const auto child = startChild({u"--full-disk"_s, file(), QString::number(room)});
    QCOMPARE(exitCodeOf(*child), 0);
    QCOMPARE(files(), QStringList{u"settings.json"_s});

    // What the full disk refused went there with the first change that had room.
    const QJsonObject object = QJsonDocument::fromJson(content()).object();
    QCOMPARE(object[u"kept"_s], QJsonValue(u"changed"_s));
    QCOMPARE(object[u"large"_s].toString().size(), 100'000);
    QCOMPARE(object[u"after"_s], QJsonValue(true));
}

void TestUserDefaults::unwritableFolder()
{
    UserDefaults defaults(u"/proc/nonexistent/settings.json"_s);
    defaults.set(u"key"_s, u"value"_s);
    QCOMPARE(defaults.string(u"key"_s), u"value"_s);
}

void TestUserDefaults::standardFile()
{
    QCOMPARE(UserDefaults::standardFile(),
             qEnvironmentVariable("XDG_CONFIG_HOME") + u"/Orvane/settings.json"_s);
}

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    if (argc == 4 && QByteArray(argv[1]).startsWith("--"))
        return Child::run(QCoreApplication::arguments());
    TestUserDefaults test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_userdefaults.moc"
